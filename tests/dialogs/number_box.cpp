// The number boxes of the parameter dialog, key by key.
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QWheelEvent>

#include "dialogs/frmDialog.h"
#include "support/scripted_user.h"

using namespace kvn;
using namespace kvn::dialogs;

namespace {

// Plays keys: a letter, digit or sign is itself; < backspace, > delete, H home, E end, A select
// all, T tab, U up, D down, P page up, N enter, S shift alone.
void play(QWidget* box, const QString& keys) {
    const QMap<QChar, Qt::Key> named = {
        {'<', Qt::Key_Backspace}, {'>', Qt::Key_Delete}, {'H', Qt::Key_Home}, {'E', Qt::Key_End},
        {'T', Qt::Key_Tab},       {'U', Qt::Key_Up},     {'D', Qt::Key_Down}, {'P', Qt::Key_PageUp},
        {'N', Qt::Key_Return},    {'S', Qt::Key_Shift}};
    for (const QChar key : keys) {
        if (key == 'A')
            QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
        else if (named.contains(key))
            QTest::keyClick(box, named[key]);
        else
            QTest::keyClick(box, key.toLatin1());
    }
}

} // namespace

class NumberBoxTest : public QObject {
    Q_OBJECT

    test::ScriptedUser asking_;
    std::unique_ptr<frmDialog> dialog_;
    QLineEdit* box_ = nullptr;

  private slots:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void init() {
        dialog_ = std::make_unique<frmDialog>(asking_, nullptr);
        dialog_->AddControl("First:", 50, frmDialog::Text);
        dialog_->AddControl("Second:", 8, frmDialog::Text);
        dialog_->show();
        QVERIFY(QTest::qWaitForWindowActive(dialog_.get()));
        box_ = dialog_->txtText(0);
        QVERIFY(box_->hasFocus());
        QCOMPARE(dialog_->LastText, QString("50"));
    }
    void cleanup() { dialog_.reset(); }

    void keys_data() {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        QTest::newRow("typing over the selection") << "A7"
                                                   << "7";
        QTest::newRow("appending") << "E5"
                                   << "505";
        QTest::newRow("emptied stays empty") << "A<"
                                             << "";
        QTest::newRow("key after emptied starts from the old value") << "A<7"
                                                                     << "507";
        QTest::newRow("a modifier alone is a key too") << "A>S"
                                                       << "50";
        QTest::newRow("letter brings back the text of the focus, not the last good one") << "A12a"
                                                                                         << "50";
        QTest::newRow("sign alone is thrown out") << "A-"
                                                  << "50";
        QTest::newRow("point alone is thrown out") << "A."
                                                   << "50";
        QTest::newRow("digits first, then the sign") << "A7H-"
                                                     << "-7";
        QTest::newRow("point on the way to a fraction") << "A2.5"
                                                        << "2.5";
        QTest::newRow("second point") << "A2.5."
                                      << "50";
        QTest::newRow("exponent needs its digits") << "A1e"
                                                   << "50";
        QTest::newRow("step up") << "A9U"
                                 << "10";
        QTest::newRow("steps keep the fraction") << "A0.5DD"
                                                 << "-1.5";
        QTest::newRow("page is ten") << "P"
                                     << "60";
        QTest::newRow("step from an emptied box") << "A<U"
                                                  << "51";
        QTest::newRow("typing over a step") << "U7"
                                            << "7";
        QTest::newRow("leaving an emptied box") << "A<T"
                                                << "50";
    }
    void keys() {
        QFETCH(QString, keys);
        play(box_, keys);
        QTEST(box_->text(), "text");
    }

    void enterInAnEmptiedBoxReadsZero() {
        play(box_, "A<N");
        QVERIFY(!dialog_->isVisible() && !dialog_->Cancelled);
        QCOMPARE(box_->text(), QString());
        QCOMPARE(dialog_->number(0), 0.0);
    }

    void clickOnOkRestoresThroughTheFocus() {
        play(box_, "A<");
        QTest::mouseClick(dialog_->findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
        QVERIFY(!dialog_->isVisible());
        QCOMPARE(dialog_->number(0), 50.0);
    }

    void oneFallBackForAllBoxes() {
        play(box_, "A7T");
        QLineEdit* second = dialog_->txtText(1);
        QVERIFY(second->hasFocus());
        QCOMPARE(dialog_->LastText, QString("8"));
        play(second, "x");
        QCOMPARE(second->text(), QString("8"));
        box_->setFocus(Qt::MouseFocusReason);
        QCOMPARE(dialog_->LastText, QString("7"));
    }

    // A look at another window must not turn a half-typed text into the fall-back.
    void anotherWindowInFrontChangesNothing() {
        play(box_, "A1234");
        QFocusEvent away(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
        QFocusEvent back(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
        QCoreApplication::sendEvent(box_, &away);
        QCoreApplication::sendEvent(box_, &back);
        QCOMPARE(box_->text(), QString("1234"));
        play(box_, "x");
        QCOMPARE(box_->text(), QString("50"));
    }

    void pastedTextLastsUntilTheNextKey() {
        box_->setText("abc");
        QTest::keyPress(box_, Qt::Key_3);
        QCOMPARE(box_->text(), QString("503"));
    }

    void textWithoutKeysIsCheckedToo() {
        QInputMethodEvent composed;
        composed.setCommitString("nine");
        QCoreApplication::sendEvent(box_, &composed);
        QCOMPARE(box_->text(), QString("50"));
    }

    void wheelStepsOnlyTheBoxInUse() {
        const auto turn = [](QWidget* box, int delta) {
            QWheelEvent event(QPointF(2, 2), box->mapToGlobal(QPointF(2, 2)), {}, {0, delta},
                              Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(box, &event);
        };
        turn(box_, 120);
        QCOMPARE(box_->text(), QString("51"));
        for (int i = 0; i < 4; ++i)
            turn(box_, -60); // a fine wheel adds up
        QCOMPARE(box_->text(), QString("49"));
        turn(dialog_->txtText(1), 120);
        QCOMPARE(dialog_->txtText(1)->text(), QString("8"));
    }

    void everyVisibleChangeIsReported() {
        QStringList texts;
        connect(dialog_.get(), &frmDialog::ControlChanged,
                [&](qint16 row, QWidget*) { texts << dialog_->txtText(row)->text(); });
        play(box_, "A12a");
        QCOMPARE(texts, (QStringList{"1", "12", "12a", "50"}));
    }
};

QTEST_MAIN(NumberBoxTest)
#include "number_box.moc"
