// The asking service on Qt's windows: what a user presses and what the caller gets.
#include <QAbstractButton>
#include <QColorDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include "dialogs/qt_asking.h"

using namespace kvn::dialogs;

namespace {

// Runs `work` on the window that a question brings up.
template <typename Window>
void whenAsked(std::function<void(Window&)> work) {
    QTimer::singleShot(0, [work] {
        auto* window = qobject_cast<Window*>(QApplication::activeModalWidget());
        if (!window) {
            QTest::qFail("no such window came up", __FILE__, __LINE__);
            return;
        }
        work(*window);
    });
}

} // namespace

Q_DECLARE_METATYPE(kvn::dialogs::Buttons)
Q_DECLARE_METATYPE(kvn::dialogs::Answer)

class AskingTest : public QObject {
    Q_OBJECT

    QtAsking asking_;

  private slots:
    void initTestCase() {
        QApplication::setQuitOnLastWindowClosed(false);
        asking_.setApplicationTitle("The Title");
    }

    void messageAnswers_data() {
        QTest::addColumn<Buttons>("buttons");
        QTest::addColumn<QStringList>("captions");
        QTest::addColumn<Answer>("enter");
        QTest::addColumn<Answer>("escape");
        QTest::newRow("ok") << Buttons::Ok << QStringList{"OK"} << Answer::Ok << Answer::Ok;
        QTest::newRow("ok, cancel")
            << Buttons::OkCancel << QStringList{"Cancel", "OK"} << Answer::Ok << Answer::Cancel;
        QTest::newRow("yes, no") << Buttons::YesNo << QStringList{"&No", "&Yes"} << Answer::Yes
                                 << Answer::No;
        QTest::newRow("all three") << Buttons::YesNoCancel << QStringList{"&No", "&Yes", "Cancel"}
                                   << Answer::Yes << Answer::Cancel;
    }
    void messageAnswers() {
        QFETCH(Buttons, buttons);
        QFETCH(Answer, enter);
        QFETCH(Answer, escape);
        const Message message{"Some <b>text</b>", "", Icon::Exclamation, buttons, nullptr};
        QStringList captions;
        whenAsked<QMessageBox>([&](QMessageBox& box) {
            for (const QAbstractButton* button : box.buttons())
                captions << button->text();
            QCOMPARE(box.windowTitle(), QString("The Title"));
            QCOMPARE(box.icon(), QMessageBox::Warning);
            QCOMPARE(box.text(), QString("Some <b>text</b>"));
            QCOMPARE(box.textFormat(), Qt::PlainText);
            QTest::keyClick(&box, Qt::Key_Return);
        });
        QCOMPARE(asking_.message(message), enter);
        captions.sort();
        QTEST(captions, "captions");
        whenAsked<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        QCOMPARE(asking_.message(message), escape);
        whenAsked<QMessageBox>([](QMessageBox& box) { box.close(); });
        QCOMPARE(asking_.message(message), escape);
    }

    void messageKeepsItsOwnTitle() {
        whenAsked<QMessageBox>([](QMessageBox& box) {
            QCOMPARE(box.windowTitle(), QString("Own"));
            box.button(QMessageBox::No)->click();
        });
        QCOMPARE(asking_.message({"Go?", "Own", Icon::Question, Buttons::YesNoCancel, nullptr}),
                 Answer::No);
    }

    void titleFallsBackToTheProgramsName() {
        QCOMPARE(QtAsking().applicationTitle(), QGuiApplication::applicationDisplayName());
    }

    void inputBox() {
        const QString prompt = "Choose.\n\n0 - One <i>\n1 - Two";
        whenAsked<QDialog>([&](QDialog& box) {
            QCOMPARE(box.windowTitle(), QString("The Title"));
            QCOMPARE(box.findChild<QLabel*>("lblPrompt")->text(), prompt);
            QCOMPARE(box.findChild<QLabel*>("lblPrompt")->textFormat(), Qt::PlainText);
            auto* field = box.findChild<QLineEdit*>("txtInput");
            QCOMPARE(field->selectedText(), QString("12")); // typing replaces it
            QTest::keyClicks(field, "7 ");
            QTest::keyClick(field, Qt::Key_Return);
        });
        QCOMPARE(asking_.inputBox(prompt, "", "12", nullptr), QString("7 "));
        whenAsked<QDialog>([](QDialog& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        QCOMPARE(asking_.inputBox("?", "T", "12", nullptr), QString());
        whenAsked<QDialog>([](QDialog& box) {
            box.findChild<QLineEdit*>("txtInput")->clear();
            QTest::mouseClick(box.findChild<QAbstractButton*>("cmdOK"), Qt::LeftButton);
        });
        QCOMPARE(asking_.inputBox("?", "T", "12", nullptr), QString());
    }

    void colours() {
        whenAsked<QColorDialog>([](QColorDialog& dialog) {
            QCOMPARE(dialog.currentColor(), QColor(0xFF, 0x40, 0x80));
            dialog.setCurrentColor(QColor(1, 2, 3));
            QTest::keyClick(&dialog, Qt::Key_Return);
        });
        QCOMPARE(asking_.color(0x8040FF, nullptr), std::optional<quint32>(0x030201));
        whenAsked<QColorDialog>([](QColorDialog& dialog) { dialog.reject(); });
        QCOMPARE(asking_.color(0, nullptr), std::optional<quint32>());
    }

    void modalEndsHoweverTheWindowGoes_data() {
        QTest::addColumn<QString>("way");
        for (const char* way : {"hide", "close", "accept", "delete", "hides itself when shown"})
            QTest::newRow(way) << way;
    }
    void modalEndsHoweverTheWindowGoes() {
        QFETCH(QString, way);
        struct Shy : QDialog {
            void showEvent(QShowEvent*) override { hide(); }
        };
        const QPointer<QDialog> window = way.startsWith("hides") ? new Shy : new QDialog;
        bool modal = true;
        QTimer::singleShot(0, [&] {
            modal = !way.startsWith("hides") && window->isModal();
            if (way == "hide") window->hide();
            if (way == "close") window->close();
            if (way == "accept") window->accept();
            if (way == "delete") delete window;
        });
        asking_.showModal(*window);
        QCoreApplication::processEvents();
        QCOMPARE(modal, !way.startsWith("hides"));
        QCOMPARE(window.isNull(), way == "delete");
        if (window) QVERIFY(!window->isVisible() && !window->isModal());
        delete window;
    }
};

QTEST_MAIN(AskingTest)
#include "asking.moc"
