// The progress window: what each report does, and that operations within operations do no harm.
#include <QDialog>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include "basic/error.h"
#include "dialogs/frmProgress.h"

using namespace kvn;
using namespace kvn::dialogs;

class ProgressTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QMainWindow> frame_;
    QLineEdit *first_ = nullptr, *second_ = nullptr; // stand for two documents
    std::unique_ptr<frmProgress> progress_;
    bool cancel_ = false;

    void report(QWidget* document, int percent, const QString& message = "Blur") {
        progress_->progress(document, percent, message, &cancel_);
    }
    QFrame* part(const char* name) {
        return progress_->window()->findChild<QFrame*>(QLatin1String(name));
    }
    void clickCancelInThePump() {
        QTimer::singleShot(0, this, [this] {
            progress_->window()->findChild<QPushButton*>("btnCancel")->click();
        });
    }

  private slots:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void init() {
        frame_ = std::make_unique<QMainWindow>();
        auto* page = new QWidget;
        first_ = new QLineEdit(page);
        second_ = new QLineEdit(page);
        second_->move(0, 40);
        frame_->setCentralWidget(page);
        frame_->show();
        QVERIFY(QTest::qWaitForWindowActive(frame_.get()));
        progress_ = std::make_unique<frmProgress>();
        progress_->setShowDelay(0);
        cancel_ = false;
    }
    void cleanup() {
        progress_.reset();
        frame_.reset();
    }

    void aWholeOperation() {
        QVERIFY(!progress_->window());
        progress_->Cancelled = true;
        report(first_, 0);
        QDialog* window = progress_->window();
        QVERIFY(window->isVisible() && !window->isModal());
        QVERIFY(!first_->isEnabled() && second_->isEnabled() && frame_->isEnabled());
        QVERIFY(!progress_->Cancelled);
        QCOMPARE(window->windowTitle(), QString("Progress"));
        QCOMPARE(part("lblProgressText")->property("text").toString(), QString("Blur"));
        QCOMPARE(part("picInner")->width(), 1);
        QCOMPARE(window->findChild<QPushButton*>("btnCancel")->text(), QString("&Cancel"));
        for (const int percent : {25, 60, 40, 99}) {
            report(first_, percent);
            QCOMPARE(window->windowTitle(), QString("Progress %1%").arg(percent));
            const double wanted = part("picProgress")->width() * percent / 100.0;
            QVERIFY(qAbs(part("picInner")->width() - wanted) <= 1);
        }
        report(first_, 100);
        QCOMPARE(window->windowTitle(), QString("Progress 100%"));
        QCOMPARE(part("picInner")->width(), part("picProgress")->width());
        QVERIFY(!window->isVisible() && first_->isEnabled() && !cancel_);
        report(second_, 0);
        QCOMPARE(progress_->window(), window); // one for the whole run
        report(second_, 100);
    }

    void cancelEndsAtTheNextReport() {
        report(first_, 0);
        clickCancelInThePump();
        report(first_, 10);
        QVERIFY(cancel_ && progress_->Cancelled);
        QVERIFY(!progress_->window()->isVisible() && first_->isEnabled());
    }

    void escAndCloseBoxMeanCancel() {
        report(first_, 0);
        QDialog* window = progress_->window();
        QVERIFY(!window->close());
        QVERIFY(progress_->Cancelled && window->isVisible());
        progress_->Cancelled = false;
        QTest::keyClick(window, Qt::Key_Escape);
        QVERIFY(progress_->Cancelled && window->isVisible());
    }

    void shortWorkShowsNoWindow() {
        progress_->setShowDelay(10000);
        report(first_, 0);
        report(first_, 50);
        QVERIFY(!progress_->window()->isVisible() && !first_->isEnabled());
        progress_->setShowDelay(0);
        report(first_, 60); // has lasted long enough now
        QVERIFY(progress_->window()->isVisible());
        report(first_, 100);
    }

    void focusComesBackUnlessTheUserTookIt() {
        first_->setFocus();
        report(first_, 0);
        QVERIFY(!first_->hasFocus());
        report(first_, 100);
        QCOMPARE(frame_->focusWidget(), first_);

        auto* third = new QLineEdit(frame_->centralWidget());
        third->show();
        report(first_, 0);
        QCOMPARE(frame_->focusWidget(), second_);
        third->setFocus();
        report(first_, 100);
        QCOMPARE(frame_->focusWidget(), third);
    }

    void operationWithinThePump() {
        report(first_, 0, "Outer");
        QTimer::singleShot(0, this, [this] {
            report(second_, 0, "Inner");
            report(second_, 50);
            report(second_, 100);
            QVERIFY(!progress_->window()->isVisible());
        });
        report(first_, 30);
        QVERIFY(second_->isEnabled() && !first_->isEnabled());
        QCOMPARE(progress_->window()->windowTitle(), QString("Progress 30%"));
        report(first_, 40); // the outer one goes on, and is seen again with its own text
        QVERIFY(progress_->window()->isVisible());
        QCOMPARE(part("lblProgressText")->property("text").toString(), QString("Outer"));
        report(first_, 100);
        QVERIFY(first_->isEnabled() && !progress_->window()->isVisible());
    }

    void documentGoneInThePump() {
        report(first_, 0);
        QTimer::singleShot(0, this, [this] {
            delete first_;
            progress_->Cancelled = true;
        });
        report(first_, 30);
        QVERIFY(cancel_ && !progress_->window()->isVisible());
    }

    void frameGoneTakesTheWindowAlong() {
        report(first_, 0);
        frame_.reset();
        QVERIFY(!progress_->window());
        report(nullptr, 0);
        report(nullptr, 50);
        QVERIFY(progress_->window()->isVisible());
        report(nullptr, 100);
    }

    void noOrderIsAsked() {
        report(first_, 70);
        QVERIFY(first_->isEnabled() && !progress_->window()->isVisible());
        first_->setEnabled(false);
        report(first_, 100);
        QVERIFY(first_->isEnabled());
        report(first_, 0);
        report(first_, 250); // the bar stays in its frame
        QCOMPARE(part("picInner")->width(), part("picProgress")->width());
        report(first_, -5);
        QCOMPARE(part("picInner")->width(), 1);
        report(first_, 100);
    }

    void downloads() {
        const auto load = [this](qint64 read, qint64 total) {
            progress_->download(first_, read, total, &cancel_);
            return progress_->window()->windowTitle();
        };
        QCOMPARE(load(0, 3000), QString("Progress"));
        QCOMPARE(part("lblProgressText")->property("text").toString(),
                 QString("Downloading Image"));
        QCOMPARE(load(2999, 3000), QString("Progress 99%")); // the whole part
        QCOMPARE(load(3000, 3000), QString("Progress 100%"));
        QVERIFY(first_->isEnabled());
        QCOMPARE(load(0, -1), QString("Progress"));
        QCOMPARE(load(500000, -1), QString("Progress 1%"));
        report(first_, 100);
        QVERIFY_EXCEPTION_THROWN(load(5, 0), RuntimeError);
    }
};

QTEST_MAIN(ProgressTest)
#include "progress.moc"
