// The user of a test: answers in the order the answers were given, and remembers what was asked. A
// question without an answer fails the test.
#pragma once

#include <QDialog>
#include <QTest>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "dialogs/asking.h"
#include "dialogs/frmDialog.h"

namespace kvn::test {

class ScriptedUser : public dialogs::Asking {
  public:
    std::deque<dialogs::Answer> answers;
    std::deque<engine::FileAnswer> files;
    std::deque<QString> inputs;
    std::deque<std::optional<quint32>> colors;
    // What the user does in a window. A parameter dialog goes to the second if there is no first.
    std::function<void(QDialog&)> inWindow;
    std::function<void(dialogs::frmDialog&)> inDialog;

    std::vector<dialogs::Message> messages;
    std::vector<engine::FileRequest> requests;
    std::vector<quint32> startColors;
    QStringList prompts;

    dialogs::Answer message(const dialogs::Message& message) override {
        messages.push_back(message);
        if (message.buttons == dialogs::Buttons::Ok) return dialogs::Answer::Ok;
        return take(answers, dialogs::Answer::Cancel);
    }
    QString inputBox(const QString& prompt, const QString&, const QString& text,
                     QWidget*) override {
        prompts += prompt + u'|' + text;
        return take(inputs, QString());
    }
    std::optional<quint32> color(quint32 start, QWidget*) override {
        startColors.push_back(start);
        return take(colors, std::optional<quint32>());
    }
    void showModal(QDialog& window) override {
        if (inWindow) return inWindow(window);
        auto* dialog = qobject_cast<dialogs::frmDialog*>(&window);
        QVERIFY2(inDialog && dialog, "an unexpected window");
        inDialog(*dialog);
    }
    engine::FileAnswer chooseFile(const engine::FileRequest& request) override {
        requests.push_back(request);
        return take(files, engine::FileAnswer{});
    }

    // What was said since the last call, each as "title|text".
    QStringList said() {
        QStringList all;
        for (const dialogs::Message& message : messages)
            all += message.title + u'|' + message.text;
        messages.clear();
        return all;
    }

  private:
    template <typename T>
    static T take(std::deque<T>& from, T otherwise) {
        if (from.empty()) {
            QTest::qFail("a question without an answer", __FILE__, __LINE__);
            return otherwise;
        }
        T first = from.front();
        from.pop_front();
        return first;
    }
};

} // namespace kvn::test
