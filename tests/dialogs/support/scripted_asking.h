// An asking service that answers from a script, for tests of anything that asks its user. The
// answers are queued in the order of the questions; every question is recorded. A question that
// the script does not expect fails the test and counts as cancelled.
//
//     ScriptedAsking asking;
//     asking.file("/tmp/a.png").message(Answer::Yes).modal([](QDialog& d) { d.accept(); });
//     ...
//     QCOMPARE(asking.asked[1].text, "File 'a' is not saved, save it?");
//     QVERIFY(asking.finished());
#pragma once

#include <QCoreApplication>
#include <QDialog>
#include <QTest>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "dialogs/asking.h"

namespace kvn::dialogs {

class ScriptedAsking : public Asking {
  public:
    enum class Kind { Message, Input, Color, File, Modal };

    struct Question {
        Kind kind;
        QString text;  // message, prompt, or object name of a modal window
        QString title; // as given, or the title of a modal window
        Icon icon = Icon::None;
        Buttons buttons = Buttons::Ok;
        QString defaultText; // of an input box
        quint32 color = 0;   // start colour
        engine::FileRequest file;
        QWidget* owner = nullptr;
    };
    std::vector<Question> asked;

    // --- the script -----------------------------------------------------------
    ScriptedAsking& message(Answer answer) {
        return add({.kind = Kind::Message, .answer = answer});
    }
    ScriptedAsking& input(const QString& text) { return add({.kind = Kind::Input, .text = text}); }
    ScriptedAsking& color(std::optional<quint32> value) {
        return add({.kind = Kind::Color, .color = value});
    }
    // An empty path is a cancelled question. `row` 0 answers with the row that was asked for.
    ScriptedAsking& file(const QString& path, int row = 0) {
        return add({.kind = Kind::File, .text = path, .row = row});
    }
    // `work` gets the shown window and has to end it (accept, reject, close, hide).
    ScriptedAsking& modal(std::function<void(QDialog&)> work) {
        return add({.kind = Kind::Modal, .work = std::move(work)});
    }
    bool finished() const { return script_.empty(); }

    // --- the service ----------------------------------------------------------
    Answer message(const Message& message) override {
        Question question{
            Kind::Message, message.text, message.title, message.icon, message.buttons, {}, 0, {},
            message.owner};
        const auto step = take(std::move(question));
        return step ? step->answer : Answer::Cancel;
    }
    QString inputBox(const QString& prompt, const QString& title, const QString& defaultText,
                     QWidget* owner) override {
        Question question{Kind::Input, prompt, title, Icon::None, Buttons::OkCancel,
                          defaultText, 0,      {},    owner};
        const auto step = take(std::move(question));
        return step ? step->text : QString();
    }
    std::optional<quint32> color(quint32 start, QWidget* owner) override {
        Question question{Kind::Color, {}, {}, Icon::None, Buttons::OkCancel, {}, start, {}, owner};
        const auto step = take(std::move(question));
        return step ? step->color : std::nullopt;
    }
    engine::FileAnswer chooseFile(const engine::FileRequest& request) override {
        Question question{Kind::File, request.fileName, {}, Icon::None, Buttons::OkCancel, {}, 0,
                          request,    request.owner};
        const auto step = take(std::move(question));
        engine::FileAnswer answer;
        answer.filterIndex = step && step->row > 0 ? step->row : request.filterIndex;
        if (step) answer.path = step->text;
        answer.accepted = !answer.path.isEmpty();
        return answer;
    }
    void showModal(QDialog& window) override {
        Question question{Kind::Modal,
                          window.objectName(),
                          window.windowTitle(),
                          Icon::None,
                          Buttons::OkCancel,
                          {},
                          0,
                          {},
                          window.parentWidget()};
        const auto step = take(std::move(question));
        if (!step) {
            window.reject();
            return;
        }
        window.show();
        QCoreApplication::processEvents();
        step->work(window);
        QCoreApplication::processEvents();
        if (!window.isVisible()) return;
        QTest::qFail("a scripted modal window was left open", __FILE__, __LINE__);
        window.reject();
    }

  private:
    struct Step {
        Kind kind = Kind::Message;
        Answer answer = Answer::Cancel;
        QString text = {};
        std::optional<quint32> color = std::nullopt;
        int row = 0;
        std::function<void(QDialog&)> work = {};
    };

    ScriptedAsking& add(Step step) {
        script_.push_back(std::move(step));
        return *this;
    }

    std::optional<Step> take(Question question) {
        asked.push_back(std::move(question));
        const Question& now = asked.back();
        if (script_.empty() || script_.front().kind != now.kind) {
            const QString what = QStringLiteral("question %1 was not expected: \"%2\" \"%3\"")
                                     .arg(asked.size())
                                     .arg(now.title, now.text);
            QTest::qFail(qPrintable(what), __FILE__, __LINE__);
            return std::nullopt;
        }
        Step step = std::move(script_.front());
        script_.pop_front();
        return step;
    }

    std::deque<Step> script_;
};

} // namespace kvn::dialogs
