// The parameter dialog: where its rows stand, what it reports and when, and its ways out.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>

#include "basic/error.h"
#include "dialogs/frmDialog.h"
#include "dialogs/row_layout.h"
#include "support/scripted_user.h"

using namespace kvn;
using namespace kvn::dialogs;

namespace {

// A font whose lines fit the design's boxes, so that pixels are the design's own.
QFont designFont() {
    QFont font;
    font.setPixelSize(12);
    return font;
}

QPushButton* button(QDialog& dialog, const char* name) {
    return dialog.findChild<QPushButton*>(QLatin1String(name));
}

void show(QDialog& dialog) {
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
}

} // namespace

class FrmDialogTest : public QObject {
    Q_OBJECT

  private slots:
    void initTestCase() {
        QApplication::setFont(designFont());
        QApplication::setQuitOnLastWindowClosed(false);
    }

    void heightGrowsWithTheRows() {
        QCOMPARE(design::heightForRows(0), 3090);
        QCOMPARE(design::heightForRows(1), 1465);
        QCOMPARE(design::heightForRows(5), 1465 + 4 * 400);
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        QCOMPARE(dialog.size(), QSize(361, 206));
        for (int rows = 1; rows <= 4; ++rows) {
            dialog.AddControl("Size:", 1, frmDialog::Text);
            QCOMPARE(dialog.ControlCount(), qint16(rows));
            QCOMPARE(dialog.height(), pixelsFromTwips(1465 + 400 * (rows - 1)));
            QCOMPARE(dialog.minimumSize(), dialog.maximumSize());
        }
        auto* bottom = dialog.findChild<QWidget*>("picBottom");
        QCOMPARE(bottom->geometry().bottom(), dialog.rect().bottom());
        QCOMPARE(bottom->height(), 49);
        QCOMPARE(button(dialog, "cmdOK")->geometry(), QRect(36, 15, 89, 25));
        QCOMPARE(button(dialog, "cmdCancel")->geometry(), QRect(216, 16, 89, 25));
    }

    void rowsStandWhereDesigned_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QRect>("first");
        QTest::addColumn<int>("width");
        QTest::newRow("text") << 0 << QRect(140, 20, 205, 21) << 205;
        QTest::newRow("colour") << 1 << QRect(140, 20, 57, 21) << 57;
        QTest::newRow("combo") << 2 << QRect(140, 24, 201, 21) << 201;
        QTest::newRow("check") << 3 << QRect(139, 24, 197, 17) << 197;
        QTest::newRow("option") << 4 << QRect(139, 24, 205, 17) << 205;
    }
    // The first row keeps each kind's own height on the page; from the second on, a control
    // stands level with its label.
    void rowsStandWhereDesigned() {
        QFETCH(int, kind);
        QFETCH(QRect, first);
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        for (int row = 0; row < 3; ++row)
            dialog.AddControl("On", 1, kind);
        const auto control = [&](int row) {
            const QString groups[] = {"txtText", "cmdColor", "cmbCombo", "chkCheck", "optOption"};
            return dialog.findChild<QWidget*>(groups[kind] + QString("(%1)").arg(row));
        };
        QCOMPARE(control(0)->geometry(), first);
        for (int row = 0; row < 3; ++row) {
            const int labelTop = pixelsFromTwips(330 + 400 * row);
            QCOMPARE(dialog.lblLabel(row)->y(), labelTop);
            QCOMPARE(dialog.lblLabel(row)->x(), 12);
            if (row > 0)
                QCOMPARE(control(row)->geometry(), first.translated(0, labelTop - first.y()));
            QCOMPARE(dialog.lblLabel(row)->isHidden(), kind >= 3);
            QCOMPARE(control(row)->accessibleName(), QString("On"));
        }
    }

    void longTextsWidenTheColumns() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("Bottom Bright Percent, a long one [0..200]:", 5, frmDialog::Text);
        dialog.AddControl("A check box whose caption is longer than the design foresaw", 1,
                          frmDialog::Check);
        const QLabel* label = dialog.lblLabel(0);
        QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
        QVERIFY(dialog.txtText(0)->x() > label->geometry().right());
        QVERIFY(dialog.chkCheck(1)->width() >= dialog.chkCheck(1)->sizeHint().width());
        QVERIFY(dialog.chkCheck(1)->geometry().right() < dialog.width());
        QCOMPARE(dialog.height(), pixelsFromTwips(1865));
    }

    void largerFontKeepsTheProportions() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("Size:", 1, frmDialog::Text);
        dialog.AddControl("Size:", 1, frmDialog::Text);
        QFont large;
        large.setPixelSize(30);
        dialog.setFont(large);
        const double scale = dialog.fontMetrics().height() / 19.0;
        QVERIFY(scale > 1.5);
        QVERIFY(qAbs(dialog.height() - 1865 / 15.0 * scale) <= 1);
        QVERIFY(dialog.txtText(0)->height() >= dialog.fontMetrics().height());
    }

    void tallerThanTheScreenScrolls() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        for (int row = 0; row < 60; ++row)
            dialog.AddControl("Row", row, frmDialog::Text);
        show(dialog);
        QVERIFY(dialog.height() <= dialog.screen()->availableGeometry().height());
        auto* scroller = dialog.findChild<QScrollArea*>();
        const auto isInView = [&](int row) {
            const QRect seen = scroller->viewport()->rect();
            const QLineEdit* box = dialog.txtText(row);
            return seen.contains(QRect(box->mapTo(scroller->viewport(), QPoint()), box->size()));
        };
        QVERIFY(isInView(0) && !isInView(59));
        for (int row = 0; row < 59; ++row)
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        QCOMPARE(dialog.focusWidget(), dialog.txtText(59));
        QVERIFY(isInView(59));
        QVERIFY(button(dialog, "cmdOK")->isVisible());
    }

    void startValuesRaiseNothing() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        QSignalSpy changes(&dialog, &frmDialog::ControlChanged);
        dialog.AddControl("A", 0.5, frmDialog::Text);
        dialog.AddControl("B", 0x8040FF, frmDialog::Color);
        dialog.AddControl("C", QVariant(), frmDialog::Combo);
        dialog.AddControl("D", true, frmDialog::Check);
        dialog.AddControl("E", false, frmDialog::Option);
        dialog.AddControl("F", "True", frmDialog::Option);
        QCOMPARE(changes.count(), 0);
        QCOMPARE(dialog.txtText(0)->text(), QString("0.5"));
        QCOMPARE(dialog.color(1), 0x8040FFu);
        QCOMPARE(dialog.listIndex(2), -1);
        QVERIFY(dialog.isChecked(3) && !dialog.isChecked(4) && dialog.isChecked(5));
        QVERIFY(!dialog.Adding() && !dialog.Cancelled);
        QVERIFY_EXCEPTION_THROWN(dialog.AddControl("G", "maybe", frmDialog::Check), RuntimeError);
        QVERIFY(!dialog.Adding());
        QCOMPARE(dialog.ControlCount(), qint16(6));
    }

    void changesAreReportedOncePerChange() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("A", 1, frmDialog::Text);
        dialog.AddControl("C", QVariant(), frmDialog::Combo);
        dialog.AddControl("D", false, frmDialog::Check);
        dialog.AddControl("E", false, frmDialog::Option);
        dialog.AddControl("B", 7, frmDialog::Color);
        QList<int> rows;
        QList<QWidget*> controls;
        connect(&dialog, &frmDialog::ControlChanged, [&](qint16 row, QWidget* control) {
            rows << row;
            controls << control;
        });
        dialog.setList(1, {"x", "y", "z"}, 2); // items alone choose nothing and report nothing
        dialog.txtText(0)->setText("5");
        dialog.chkCheck(2)->click();
        dialog.optOption(3)->click();
        asking.colors = {0x112233u, std::nullopt};
        dialog.cmdColor(4)->click();
        QCOMPARE(dialog.color(4), 0x112233u);
        dialog.cmdColor(4)->click(); // cancelled: the colour stays
        QCOMPARE(dialog.color(4), 0x112233u);
        QCOMPARE(asking.startColors[0], 7u);
        QCOMPARE(rows, (QList<int>{1, 0, 2, 4, 4}));
        QCOMPARE(controls[1], dialog.txtText(0));
        QCOMPARE(controls[3], dialog.cmdColor(4));
        QCOMPARE(dialog.listIndex(1), 2);
    }

    // What a resize dialog does: the handler writes the other row and is called again for it.
    void handlerMayWriteIntoRows() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("Width:", 4, frmDialog::Text);
        dialog.AddControl("Height:", 3, frmDialog::Text);
        QList<int> rows;
        connect(&dialog, &frmDialog::ControlChanged, [&](qint16 row, QWidget*) {
            rows << row;
            if (row == 0) dialog.txtText(1)->setText("30");
        });
        dialog.txtText(0)->setText("40");
        QCOMPARE(rows, (QList<int>{0, 1}));
    }

    void failingColourDialogLeavesTheColour() {
        struct Failing : test::ScriptedUser {
            std::optional<quint32> color(quint32, QWidget*) override {
                throw RuntimeError(5, "no dialog", "test");
            }
        } asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("B", 7, frmDialog::Color);
        QSignalSpy changes(&dialog, &frmDialog::ControlChanged);
        dialog.cmdColor(0)->click();
        QCOMPARE(dialog.color(0), 7u);
        QCOMPARE(changes.count(), 0);
    }

    void optionsExcludeEachOther() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("A", true, frmDialog::Option);
        dialog.AddControl("between", 1, frmDialog::Text);
        dialog.AddControl("B", false, frmDialog::Option);
        dialog.optOption(2)->click();
        QVERIFY(!dialog.isChecked(0) && dialog.isChecked(2));
    }

    void unknownKindHasALabelAlone() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("Odd", 1, 9);
        dialog.AddControl("Size:", 2, frmDialog::Text);
        QVERIFY(!dialog.lblLabel(0)->isHidden());
        QCOMPARE(dialog.lblLabel(0)->text(), QString("Odd"));
        QCOMPARE(dialog.number(1), 2.0);
        QCOMPARE(dialog.height(), pixelsFromTwips(1865));
    }

    void wrongRowIsAnError() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("Size:", 2, frmDialog::Text);
        QVERIFY_EXCEPTION_THROWN(dialog.cmdColor(0), RuntimeError);
        QVERIFY_EXCEPTION_THROWN(dialog.txtText(1), RuntimeError);
        QVERIFY_EXCEPTION_THROWN(dialog.txtText(-1), RuntimeError);
        QVERIFY_EXCEPTION_THROWN(dialog.isChecked(0), RuntimeError);
    }

    void waysOut_data() {
        QTest::addColumn<QString>("way");
        QTest::addColumn<bool>("cancelled");
        QTest::newRow("OK") << "ok" << false;
        QTest::newRow("Enter") << "enter" << false;
        QTest::newRow("Cancel") << "cancel" << true;
        QTest::newRow("Esc") << "esc" << true;
        QTest::newRow("close box") << "close" << true;
    }
    void waysOut() {
        QFETCH(QString, way);
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("Size:", 2, frmDialog::Text);
        asking.inWindow = [&](QDialog& window) {
            window.show();
            QVERIFY(QTest::qWaitForWindowActive(&window));
            dialog.txtText(0)->setText("12.5");
            QWidget* focus = dialog.txtText(0);
            if (way == "ok") QTest::mouseClick(button(window, "cmdOK"), Qt::LeftButton);
            if (way == "enter") QTest::keyClick(focus, Qt::Key_Return);
            if (way == "cancel") QTest::mouseClick(button(window, "cmdCancel"), Qt::LeftButton);
            if (way == "esc") QTest::keyClick(focus, Qt::Key_Escape);
            if (way == "close") QVERIFY(!window.close()); // refused, and hidden
        };
        asking.showModal(dialog);
        QTEST(dialog.Cancelled, "cancelled");
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.number(0), 12.5); // readable in every case
        QVERIFY(dialog.close());          // the caller's own end goes through
    }

    void keyboardGoesThroughTheRows() {
        test::ScriptedUser asking;
        frmDialog dialog(asking, nullptr);
        dialog.AddControl("B", 7, frmDialog::Color);
        dialog.AddControl("A", 1, frmDialog::Text);
        dialog.AddControl("C", QVariant(), frmDialog::Combo);
        dialog.AddControl("D", false, frmDialog::Check);
        show(dialog);
        QStringList names;
        for (int i = 0; i < 6; ++i) {
            names << dialog.focusWidget()->objectName();
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(names, (QStringList{"cmdColor(0)", "txtText(1)", "cmbCombo(2)", "chkCheck(3)",
                                     "cmdOK", "cmdCancel"}));
        QCOMPARE(dialog.lblLabel(1)->buddy(), dialog.txtText(1));
    }
};

QTEST_MAIN(FrmDialogTest)
#include "frm_dialog.moc"
