// Failures that reach the application object, and the keys that text fields keep.
#include "shell/application.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <QtTest>

#include "basic/error.h"

using namespace kvn;

namespace {

class Failing : public QObject {
  public:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::User)
            throw RuntimeError(errors::diskFull, "Disk full", "Test");
        if (event->type() == QEvent::User + 1) throw std::bad_alloc();
        return QObject::event(event);
    }
};

} // namespace

class ApplicationTest : public QObject {
    Q_OBJECT

    int failures_ = 0;

  private slots:
    void init() {
        failures_ = 0;
        static_cast<shell::Application*>(qApp)->setReport([this](std::exception_ptr failure) {
            QVERIFY_EXCEPTION_THROWN(std::rethrow_exception(failure), std::exception);
            ++failures_;
        });
    }

    void failingHandlerIsReportedFromTheLoop() {
        Failing failing;
        QEvent user(QEvent::User), memory(static_cast<QEvent::Type>(QEvent::User + 1));
        QCoreApplication::sendEvent(&failing, &user);
        QCOMPARE(failures_, 0); // never from within the handler
        QTRY_COMPARE(failures_, 1);
        QCoreApplication::sendEvent(&failing, &memory);
        QTRY_COMPARE(failures_, 2);
    }

    // A handler that fails at each paint must not bury the user under boxes.
    void burstOfFailuresIsOneReport() {
        Failing failing;
        QEvent user(QEvent::User);
        for (int i = 0; i < 20; ++i)
            QCoreApplication::sendEvent(&failing, &user);
        QTRY_COMPARE(failures_, 1);
        QTest::qWait(20);
        QCOMPARE(failures_, 1);
    }

    void fieldClaimsItsEditingKeys_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("modifiers");
        QTest::addColumn<bool>("claimed");
        const int ctrl = Qt::ControlModifier;
        QTest::newRow("Del") << int(Qt::Key_Delete) << 0 << true;
        QTest::newRow("Ctrl+Y") << int(Qt::Key_Y) << ctrl << true;
        QTest::newRow("Ctrl+Z") << int(Qt::Key_Z) << ctrl << true;
        QTest::newRow("Ctrl+S") << int(Qt::Key_S) << ctrl << false;
        QTest::newRow("F1") << int(Qt::Key_F1) << 0 << false;
    }
    void fieldClaimsItsEditingKeys() {
        QFETCH(int, key);
        QFETCH(int, modifiers);
        QFETCH(bool, claimed);
        QLineEdit field;
        QKeyEvent event(QEvent::ShortcutOverride, key, Qt::KeyboardModifiers(modifiers));
        event.ignore();
        QCoreApplication::sendEvent(&field, &event);
        QCOMPARE(event.isAccepted(), claimed);
    }
};

int main(int argc, char** argv) {
    shell::Application app(argc, argv);
    ApplicationTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "application.moc"
