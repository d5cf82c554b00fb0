// Everything a document window needs to live in a test: a scripted user, and in the frame's place
// recorders that write down what they are told. Role calls and engine calls share one journal.
#pragma once

#include <QComboBox>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <map>

#include "basic/error.h"
#include "dialogs/frmDialog.h"
#include "dialogs/frmProgress.h"
#include "document/commands.h"
#include "document/document_actions.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "document/roles.h"
#include "engine/engine.h"
#include "engine/trace.h"
#include "support/scripted_user.h"

namespace kvn::test {

using document::frmMain;

// The journal of a test, in call order.
class Journal {
  public:
    explicit Journal(engine::Trace& trace) : trace_(trace) { trace_.setKept(true); }

    void note(const QString& text) { notes_.emplace_back(trace_.records().size(), text); }
    void clear() {
        trace_.clear();
        notes_.clear();
    }
    // Engine calls as "object operation [arguments]", role calls as they were noted.
    QStringList all() const { return merged(true); }
    QStringList engineCalls() const { return merged(false); }

  private:
    QStringList merged(bool withNotes) const {
        const auto records = trace_.records();
        QStringList lines;
        auto note = notes_.begin();
        for (std::size_t i = 0; i <= records.size(); ++i) {
            for (; withNotes && note != notes_.end() && note->first <= i; ++note)
                lines += note->second;
            if (i < records.size()) lines += line(records[i]);
        }
        return lines;
    }
    static QString line(const engine::TraceRecord& record) {
        const QByteArray args = QJsonDocument(record.args).toJson(QJsonDocument::Compact);
        QString text = record.on + u' ' + record.op + u' ' + QString::fromUtf8(args);
        if (record.step) text += QStringLiteral(" -> ") + *record.step;
        return text;
    }

    engine::Trace& trace_;
    std::vector<std::pair<std::size_t, QString>> notes_;
};

inline QString text(bool on) {
    return on ? QStringLiteral("True") : QStringLiteral("False");
}

class FakeMenus : public document::MenuState {
  public:
    struct Item {
        bool enabled = true, checked = false, visible = true;
        QString caption;
    };
    std::map<std::pair<QString, int>, Item> items;
    std::map<QString, std::pair<int, int>> groups; // first and count
    QStringList poppedUp;

    void setEnabled(const QString& name, int index, bool on) override {
        items[{name, index}].enabled = on;
    }
    bool isEnabled(const QString& name, int index) const override {
        return items.contains({name, index}) ? items.at({name, index}).enabled : true;
    }
    void setChecked(const QString& name, int index, bool on) override {
        items[{name, index}].checked = on;
    }
    bool isChecked(const QString& name, int index) const override {
        return items.contains({name, index}) && items.at({name, index}).checked;
    }
    void setCaption(const QString& name, int index, const QString& caption) override {
        items[{name, index}].caption = caption;
    }
    void setVisible(const QString& name, int index, bool on) override {
        items[{name, index}].visible = on;
    }
    void resizeGroup(const QString& name, int first, int count) override {
        groups[name] = {first, count};
    }
    void popUp(const QString& name, const QPoint&) override { poppedUp += name; }
    Item& item(const QString& name, int index) { return items[{name, index}]; }
    QStringList captions(const QString& name) const {
        QStringList all;
        for (const auto& [key, item] : items)
            if (key.first == name) all += item.caption;
        return all;
    }
};

class FakeRules : public document::FrameRules {
  public:
    explicit FakeRules(Journal& journal) : journal_(journal) {}
    QStringList status, said;

    void EnDisMenuItems(bool enable) override {
        journal_.note("EnDisMenuItems(" + text(enable) + ")");
    }
    void ImageMenusEnabled(bool enable) override {
        journal_.note("ImageMenusEnabled(" + text(enable) + ")");
    }
    void UpdateStatus(const QString& x, const QString& y, const QString& width,
                      const QString& height) override {
        status = {x, y, width, height};
    }
    void say(const QString& text) override { said += text; }
    void SelectTool(int tool) override { journal_.note(QString("SelectTool(%1)").arg(tool)); }

  private:
    Journal& journal_;
};

class FakeHost : public document::DocumentHost {
  public:
    std::vector<QPointer<frmMain>> adopted, shown;
    QWidget frame;
    int activations = 0;

    FakeHost() {
        frame.resize(800, 600);
        frame.show();
    }
    ~FakeHost() override {
        for (const auto& document : adopted)
            delete document;
    }
    void adopt(frmMain* document) override {
        adopted.push_back(document);
        document->setParent(&frame);
    }
    void present(frmMain* document) override {
        shown.push_back(document);
        document->resize(document->sizeHint());
        document->show();
    }
    void activate(frmMain*) override { ++activations; }
    void close(frmMain* document) override {
        if (document->close()) delete document;
    }
    frmMain* ActiveForm() const override {
        for (auto it = shown.rbegin(); it != shown.rend(); ++it)
            if (*it) return *it;
        return nullptr;
    }
    QWidget* window() override { return &frame; }
};

class FakeSkins : public document::SkinHost {
  public:
    explicit FakeSkins(Journal& journal) : journal_(journal) {}
    void applySkin(QWidget* widget, const QString& skin) override {
        journal_.note("skin " + widget->objectName() + " '" + skin + "'");
    }

  private:
    Journal& journal_;
};

struct Desk {
    engine::Engine engine;
    Journal journal{engine.trace()};
    ScriptedUser user;
    dialogs::frmProgress progress;
    document::ProgramState state;
    FakeMenus menus;
    FakeRules rules{journal};
    FakeSkins skins{journal};
    FakeHost host;
    document::Services services{engine, user, progress, state, menus, rules, host, skins};
    QTemporaryDir folder;

    Desk() {
        engine.setFileChooser(&user);
        state.programFolder = folder.path();
        document::addDocumentCommands(state.commands);
    }
    QString path(const QString& name) const { return folder.filePath(name); }

    // A picture of the given size with a gradient in it.
    QString picture(const QString& name, int width = 32, int height = 24) const {
        QImage image(width, height, QImage::Format_RGB32);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                image.setPixel(x, y, qRgb(x * 8, y * 10, 40));
        image.save(path(name));
        return path(name);
    }
    QString file(const QString& name, const QByteArray& content) const {
        QFile out(path(name));
        if (out.open(QIODevice::WriteOnly)) out.write(content);
        return path(name);
    }
    // `pages` pictures of growing width in one file.
    QString tiff(const QString& name, int pages) {
        engine::Image image(engine);
        for (int i = 0; i < pages; ++i) {
            engine::Image page(engine);
            page.Import().New(10 + i, 8, engine::Color(quint8(i), 0, 0), 5, "no undo");
            image.Images().Add(page, 0, 0, "no undo");
        }
        image.Export().Save(path(name), 3, 0, -1);
        return path(name);
    }

    frmMain* open(const QString& file) {
        user.files.push_back({true, file, 1});
        return document::openDocument(services) ? host.ActiveForm() : nullptr;
    }
    // A new picture by the dialog, with the given values typed in.
    frmMain* create(const QString& width = "40", const QString& height = "30",
                    const QString& alpha = "255", int type = 5) {
        user.inDialog = [=](dialogs::frmDialog& dialog) {
            dialog.txtText(0)->setText(width);
            dialog.txtText(1)->setText(height);
            dialog.txtText(3)->setText(alpha);
            dialog.cmbCombo(4)->setCurrentIndex(type);
        };
        const bool opened = document::newDocument(services);
        user.inDialog = nullptr;
        return opened ? host.ActiveForm() : nullptr;
    }
};

} // namespace kvn::test
