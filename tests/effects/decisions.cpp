// Where a command of the effects has something to decide: cancelled dialogs, failures and their
// boxes, the sides of Resize, regions, palette files, the perspective's corners, the warp line.
#include <QPushButton>

#include "basic/error.h"
#include "effects/support/studio.h"
#include "effects/support/typed_catalogue.h"

using namespace kvn;
using namespace kvn::test;

namespace {

const QRect selection(5, 7, 31, 21);
const QString copied = R"(imgxAction Import.FromImgX ["@ImgX",0,""])";
const QString cropped = R"(imgxAction Geometry.Crop [5,7,31,21,""])";
const QString updated = R"(ImgX Import.FromImgX ["@imgxAction",0,""])";
const QString drawn = R"(ImgX Draw.Image ["@imgxAction",5,7,null,1,true,""])";

// The calls between the making of the working copy and its return; empty for others than these.
QStringList between(const QStringList& calls) {
    const bool framed = calls.size() > 1 && calls.first() == copied && calls.last() == updated;
    return framed ? calls.mid(1, calls.size() - 2) : QStringList("no frame: " + calls.join(u'\n'));
}

using Dialog = dialogs::frmDialog;

} // namespace

class DecisionsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Studio> studio_;

    // Leaves no step behind, so that the steps of the next command can be counted.
    void clean() {
        studio_->form->ImgX->setUndoEnabled(false);
        studio_->form->ImgX->setUndoEnabled(true);
        studio_->form->Saved = true;
        studio_->user.said();
    }
    int steps() const { return studio_->form->ImgX->Undos(); }
    QStringList run(const char* menu, int index = -1) {
        clean();
        return studio_->run(menu, index);
    }
    void answer(const std::function<void(Dialog&)>& work) { studio_->user.inDialog = work; }
    QString pal(const QByteArray& bytes) const {
        QFile file(studio_->folder.filePath("colors.pal"));
        if (file.open(QIODevice::WriteOnly)) file.write(bytes);
        return file.fileName();
    }
    // The next change of the working copy but `skip` fails.
    void failAfter(int skip, std::int32_t number) {
        connect(studio_->form->imgxAction, &engine::ImgX::ImageChanged, this,
                [skip, number]() mutable {
                    if (skip-- == 0) throw RuntimeError(number, "It broke.", "Its source");
                });
    }

  private slots:
    void init() {
        studio_ = std::make_unique<Studio>();
        studio_->openType(5);
        clean();
    }
    void cleanup() {
        studio_->form->Saved = true;
        studio_.reset();
    }

    void cancelledDialogLeavesOneEmptyStep() {
        const Snapshot before = snapshot(studio_->picture());
        for (const bool selected : {false, true}) {
            if (selected) studio_->select(selection);
            const QStringList frame =
                selected ? QStringList{copied, cropped, drawn} : QStringList{copied, updated};
            for (const TypedItem& item : TypedCatalogue().items) {
                if (item.rows.empty()) continue;
                answer([](Dialog& dialog) { dialog.reject(); });
                studio_->user.colors = {std::nullopt};
                QCOMPARE(run(item.menu.toLatin1(), item.index), frame);
                QCOMPARE(steps(), 1);
                QVERIFY(snapshot(studio_->picture()) == before);
                QVERIFY(studio_->user.said().isEmpty());
            }
        }
    }

    // As the menu offers to take it back.
    void stepIsCalledAfterItsCommand() {
        const auto label = [this](const char* menu, int index = -1) {
            run(menu, index);
            return studio_->form->ImgX->UndoLabel();
        };
        for (const bool selected : {false, true}) {
            if (selected) studio_->select(selection);
            QCOMPARE(label("mnuFiltersBlurAction", 0), QString("Blur"));
            QCOMPARE(label("mnuFiltersDemosCharcoal"), QString("Charcoal"));
            QCOMPARE(label("mnuFiltersDemosPatchWork"), QString("Patchwork Mosaic"));
            QCOMPARE(label("mnuFilters", 23),
                     QString("Normalized Difference (Red Channel - Green Channel)"));
        }
        studio_->state.HasSelection = false;
        answer([](Dialog& dialog) { dialog.reject(); });
        QCOMPARE(label("mnuFilters", 31), QString("Copy Image"));
    }

    // Also an index that stands for a submenu, a separator or nothing at all.
    void indexWithoutEntryTakesTheFramesWay() {
        for (const char* member : {"Effects", "Filters"})
            for (const int index : {-1, 1, 10, 21, 28, 99}) {
                clean();
                const QStringList calls = studio_->calls(
                    [&] { QVERIFY(document::runCommand(*studio_->form, member, index)); });
                QCOMPARE(calls, QStringList({copied, updated}));
                QCOMPARE(steps(), 1);
            }
    }

    void failuresEndInTheirBox_data() {
        QTest::addColumn<QString>("menu");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("box");
        QTest::addColumn<bool>("updates");
        const QString common = "|Error: It broke.\nSource: Its source";
        const QString numbered = "Its source|Error: 57\n\nIt broke.";
        const auto row = [](const char* menu, int index, const QString& box, bool updates) {
            QTest::addRow("%s(%d)", menu, index) << menu << index << box << updates;
        };
        row("mnuFilters", 4, common, false);
        row("mnuFilters", 23, common, false);
        row("mnuFlip", 1, common, false);
        row("mnuFiltersBlurAction", 0, common, false);
        row("mnuFiltersNegativeWhite", -1, common, false);
        row("mnuEffectsDropShadow", 2, common, false);
        row("mnuEffectsDither", 1, "|It broke.", false);
        row("mnuEffectsThumbnail", 1, numbered, true);
        row("mnuEffectsPalette", 0, numbered, true);
        row("mnuFiltersCustomMatrixNightLine", -1, numbered, true);
        row("mnuFiltersDemosPatchWork", -1, "|Error: It broke.", true);
        row("mnuFiltersDemosCharcoal", -1, numbered, false);
        row("mnuFiltersDemosFlakyPaint", -1, numbered, false);
    }
    void failuresEndInTheirBox() {
        QFETCH(QString, menu);
        QFETCH(int, index);
        QFETCH(QString, box);
        QFETCH(bool, updates);
        const Snapshot before = snapshot(studio_->picture());
        const bool isRecipe = menu.endsWith("Charcoal") || menu.endsWith("FlakyPaint");
        failAfter(1, errors::deviceIo);
        const QStringList calls = run(menu.toLatin1(), index);
        QCOMPARE(studio_->user.messages.at(0).icon, box.contains("57") ? dialogs::Icon::Exclamation
                                                    : box.contains("Source")
                                                        ? dialogs::Icon::Critical
                                                        : dialogs::Icon::None);
        QCOMPARE(studio_->user.said(), QStringList(box));
        QCOMPARE(calls.contains(updated), updates);
        QCOMPARE(steps(), int(updates));
        QCOMPARE(calls.contains("imgxAction ImgX.Progress [true]"), false);
        QCOMPARE(calls.contains("imgxAction ImgX.Progress [false]"), isRecipe);
        QVERIFY(!studio_->form->frmDlg);
        if (!updates) QVERIFY(snapshot(studio_->picture()) == before);
        if (!updates) QVERIFY(studio_->form->Saved);
    }

    // A stopped command says nothing, leaves nothing, and the next one works.
    void stopLeavesNothing_data() { failuresEndInTheirBox_data(); }
    void stopLeavesNothing() {
        QFETCH(QString, menu);
        QFETCH(int, index);
        const Snapshot before = snapshot(studio_->picture());
        failAfter(1, errors::cancelled);
        QVERIFY(!run(menu.toLatin1(), index).contains(updated));
        QVERIFY(studio_->user.said().isEmpty());
        QCOMPARE(steps(), 0);
        QVERIFY(studio_->form->Saved);
        QVERIFY(snapshot(studio_->picture()) == before);
        studio_->user.colors = {0u};
        QVERIFY(run(menu.toLatin1(), index).contains(updated));
        QCOMPARE(steps(), 1);
    }

    void userStopsSlowWork() {
        studio_->form->ImgX->Geometry().Resize(4000, 3000, 0, "no undo");
        studio_->engine.setThreads(1);
        studio_->engine.setProgressDelay(0);
        studio_->progress.setShowDelay(0);
        const Snapshot before = snapshot(studio_->picture());
        int reports = 0;
        connect(studio_->form->imgxAction, &engine::ImgX::Progress, this, [&] {
            QPushButton* cancel = studio_->progress.window()->findChild<QPushButton*>();
            if (++reports == 2) QVERIFY(cancel->isVisible() && !studio_->form->isEnabled());
            if (reports == 2) cancel->click();
        });
        QCOMPARE(run("mnuEffectsDither", 7).size(), 2);
        QVERIFY(reports > 2);
        QCOMPARE(studio_->user.said(), QStringList());
        QCOMPARE(steps(), 0);
        QVERIFY(studio_->form->Saved && studio_->form->isEnabled());
        QVERIFY(!studio_->progress.window()->isVisible());
        QVERIFY(snapshot(studio_->picture()) == before);
    }

    // The perspective examples work on the picture itself, and without a working copy nothing runs.
    void failureOfTheWorkingCopyEndsEverything() {
        const std::pair<const char*, QString> boxes[] = {
            {"mnuEffectsPerspectiveExamples", "|It broke."},
            {"mnuEffectsThumbnail", "Its source|Error: 57\n\nIt broke."},
            {"mnuEffectsPalette", "Its source|Error: 57\n\nIt broke."}};
        for (const auto& [menu, box] : boxes) {
            failAfter(0, errors::deviceIo);
            QCOMPARE(run(menu, 0), QStringList(copied));
            QCOMPARE(studio_->user.said(), QStringList(box));
            QCOMPARE(steps(), 0);
        }
    }

    void bytesOverflowOutsideTheirRange() {
        struct Case {
            const char* menu;
            int index, row;
            const char* typed;
        };
        for (const Case& c : std::initializer_list<Case>{{"mnuEffects", 3, 5, "255.5"},
                                                         {"mnuEffects", 11, 2, "300"},
                                                         {"mnuEffects", 24, 4, "-1"},
                                                         {"mnuEffects", 24, 6, "256"},
                                                         {"mnuEffectsDropShadow", 0, 2, "255.5"},
                                                         {"mnuFilters", 0, 0, "256"},
                                                         {"mnuFilters", 0, 1, "-0.6"},
                                                         {"mnuEffects", 2, 0, "1e10"}}) {
            answer([&](Dialog& dialog) { dialog.txtText(c.row)->setText(c.typed); });
            QCOMPARE(run(c.menu, c.index), QStringList(copied));
            const QStringList said = studio_->user.said();
            QVERIFY2(said.size() == 1 && said[0].startsWith("|Error: Overflow"), c.menu);
            QCOMPARE(steps(), 0);
        }
    }

    void sidesFollowEachOther() {
        answer([](Dialog& dialog) {
            const auto type = [&](int row, const char* text) {
                dialog.txtText(row)->setText(text);
                return dialog.txtText(0)->text() + " x " + dialog.txtText(1)->text();
            };
            QCOMPARE(type(0, "100"), QString("100 x 75"));
            QCOMPARE(type(1, "10"), QString("13 x 10"));
            QCOMPARE(type(0, "10"), QString("10 x 8")); // 7.5
            QCOMPARE(type(0, "6"), QString("6 x 4"));   // 4.5
            QCOMPARE(type(0, ""), QString(" x 0"));
            QCOMPARE(type(0, "1e12"), QString("1e12 x 0")); // fits no side
            QCOMPARE(type(1, "12"), QString("16 x 12"));
            dialog.cmbCombo(2)->setCurrentIndex(0);
            dialog.chkCheck(3)->setChecked(false);
            QCOMPARE(type(1, "20"), QString("16 x 20"));
            dialog.chkCheck(3)->setChecked(true);
            QCOMPARE(type(1, "20"), QString("16 x 20")); // the same text is no change
        });
        QCOMPARE(between(run("mnuEffects", 2)),
                 QStringList(R"(imgxAction Geometry.Resize [16,20,0,""])"));
    }

    void borderOfNothingIsStillDrawn() {
        answer([](Dialog& dialog) { dialog.txtText(0)->setText("0"); });
        const Snapshot before = snapshot(studio_->picture());
        QCOMPARE(between(run("mnuEffects", 11)),
                 QStringList(R"(imgxAction Geometry.ResizeCanvas [64,48,"#000000ff",0,0,""])"));
        QCOMPARE(steps(), 1);
        QVERIFY(snapshot(studio_->picture()) == before);
    }

    void redEyeNeedsARegion() {
        QCOMPARE(between(run("mnuFilters", 13)), QStringList());
        QCOMPARE(studio_->user.said(),
                 QStringList("|Please select a region to apply the red eye filter to"));
        QCOMPARE(steps(), 1);

        int asked = 0;
        answer([&](Dialog& dialog) {
            ++asked;
            QCOMPARE(dialog.windowTitle(), QString("Red Eye Reduction"));
            QCOMPARE(dialog.lblLabel(0)->text(), QString("Saturation Level [0..100]:"));
            QCOMPARE(dialog.lblLabel(1)->text(), QString("Color Range [0..100]:"));
            QCOMPARE(dialog.number(0) + dialog.number(1), 100.0);
            dialog.txtText(1)->setText("60");
        });
        studio_->form->ImgX->setHasRegion(true); // as the Ctrl key does
        QCOMPARE(between(run("mnuFilters", 13)),
                 QStringList(R"(imgxAction Effects.RedEyeReduction [0,0,64,48,50,60,""])"));
        studio_->select(selection);
        QCOMPARE(
            run("mnuFilters", 13),
            QStringList({copied, cropped,
                         R"(imgxAction Effects.RedEyeReduction [0,0,31,21,50,60,""])", drawn}));
        studio_->state.HasSelection = false; // as a click does; the region stays
        QCOMPARE(between(run("mnuFilters", 13)),
                 QStringList(R"(imgxAction Effects.RedEyeReduction [5,7,36,28,50,60,""])"));
        QCOMPARE(asked, 3);
    }

    // The pages that the split leaves behind must not pile up, nor come into the next command.
    void normalizedDifferenceRepeats() {
        const Snapshot before = snapshot(studio_->picture());
        run("mnuFilters", 23);
        const Snapshot after = snapshot(studio_->picture());
        const int pages = studio_->form->imgxAction->Images().Count();
        for (int i = 0; i < 3; ++i) {
            studio_->choose("mnuUndo");
            QVERIFY(snapshot(studio_->picture()) == before);
            run("mnuFilters", 23);
            QVERIFY(snapshot(studio_->picture()) == after);
        }
        QCOMPARE(studio_->form->imgxAction->Images().Count(), pages);
        QCOMPARE(studio_->form->ImgX->Images().Count(), 1);
    }

    void paletteFiles_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("valid"); // size and bytes
        QTest::addColumn<bool>("applied");
        QTest::newRow("right") << QByteArray(768, 63) << true << true;
        QTest::newRow("short") << QByteArray(767, 63) << false << true;
        QTest::newRow("long") << QByteArray(769, 63) << false << true;
        QTest::newRow("eight bits") << QByteArray(767, 63).append(char(64)) << false << false;
        QTest::newRow("empty") << QByteArray() << false << true;
    }
    void paletteFiles() {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, valid);
        QFETCH(bool, applied);
        const QStringList told =
            valid ? QStringList() : QStringList("|colors.pal is not a valid palette file.");
        const Snapshot before = snapshot(studio_->picture());
        const engine::FileAnswer chosen{true, pal(bytes), 1};
        studio_->user.files = {chosen};
        const QStringList calls = run("mnuEffectsPalette", 4);
        QCOMPARE(
            calls.mid(0, 4),
            QStringList({copied, R"(Dialog Dialog.Filter ["Palette Files|*.pal|All Files|*.*"])",
                         "Dialog Dialog.FilterIndex [1]", "Dialog Dialog.OpenOption [true]"}));
        QCOMPARE(calls.filter("Palette Palette.Entry [").size(), applied ? 256 : 0);
        QCOMPARE(calls.filter("Geometry.ApplyPalette").size(), int(applied));
        if (bytes.size() >= 768 && applied) {
            const QString apply = calls.filter("Geometry.ApplyPalette").first();
            QCOMPARE(apply.count("\"#fcfcfcff\""), 256);
            QVERIFY(apply.endsWith(R"(],true,""])"));
        }
        QCOMPARE(calls.contains(updated), applied);
        QCOMPARE(studio_->user.said(), told);
        QCOMPARE(steps(), int(applied));
        if (!applied) QVERIFY(snapshot(studio_->picture()) == before);

        studio_->user.files = {chosen};
        QCOMPARE(run("mnuEffectsPalDisplayPalFile").contains("ImgX ImgX.Progress [true]"), valid);
        QCOMPARE(studio_->user.said(), told);
        QCOMPARE(steps(), int(valid));
        QCOMPARE(studio_->form->ImgX->Info().Width() == 256, valid);
    }

    void paletteFileThatCannotBeRead() {
        for (const char* menu : {"mnuEffectsPalette", "mnuEffectsPalDisplayPalFile"}) {
            const int index = QLatin1String(menu) == "mnuEffectsPalette" ? 4 : -1;
            studio_->user.files = {{false, {}, 1}};
            QVERIFY(!run(menu, index).contains(updated));
            QVERIFY(studio_->user.said().isEmpty()); // cancelled
            studio_->user.files = {{true, studio_->folder.filePath("none.pal"), 1}};
            QVERIFY(!run(menu, index).contains(updated));
            QVERIFY(!studio_->user.said().isEmpty());
            QCOMPARE(steps(), 0);
            QVERIFY(studio_->form->Saved);
        }
    }

    void ditherMarkGoesAlong() {
        studio_->choose("mnuEffectsDitherPalette");
        QVERIFY(between(run("mnuEffectsPalette", 3)).last().endsWith(R"(],false,""])"));
        studio_->choose("mnuEffectsDitherPalette");
        QVERIFY(between(run("mnuEffectsPalette", 3)).last().endsWith(R"(],true,""])"));
    }

    void paletteFileIsShown() {
        QByteArray bytes;
        for (int i = 0; i < 256; ++i)
            bytes.append(char(i / 4)).append(char(i % 64)).append(char(63 - i / 4));
        studio_->user.files = {{true, pal(bytes), 1}};
        const Snapshot before = snapshot(studio_->picture());
        const QStringList calls = run("mnuEffectsPalDisplayPalFile").mid(4);
        QCOMPARE(calls,
                 QStringList({"ImgX ImgX.Progress [false]",
                              R"(ImgX Import.New [256,128,"#000000ff",5,"Display Palette File"])",
                              "ImgX ImgX.Progress [true]"}));
        for (int y = 0; y < 128; ++y)
            for (int x = 0; x < 256; ++x) {
                const int i = y / 8 * 16 + x / 16;
                QCOMPARE(studio_->picture().Info().GetPixel(x, y).RgbGet(),
                         quint32(i / 4 * 4 | i % 64 * 4 << 8 | (63 - i / 4) * 4 << 16));
            }
        QCOMPARE(steps(), 1);
        QVERIFY(!studio_->form->Saved);
        studio_->choose("mnuUndo");
        QVERIFY(snapshot(studio_->picture()) == before);
    }

    void perspectiveCorners() {
        const auto call = [this](int index) { return run("mnuEffectsPerspectiveExamples", index); };
        const Snapshot before = snapshot(studio_->picture());
        for (int index = 0; index < 6; ++index) {
            call(index);
            QCOMPARE(steps(), 2); // the example, and the picture as it was
            QVERIFY(snapshot(studio_->picture()) == before);
        }
        studio_->select(selection); // the corners follow the copy, the target the picture
        QCOMPARE(call(1)[2],
                 QString(R"(ImgX Geometry.Perspective [[8,16],[0,0],[30,0],[23,16],1,""])"));
        QVERIFY(call(4)[2].startsWith(
            "ImgX Geometry.PerspectiveMap [[0,20],[0,0],[30,5],[30,16],[0,47],[0,0],[63,0],"
            "[63,47],0,\"\"]"));
        studio_->state.HasSelection = false;
        studio_->openType(5, 400, 200);
        QVERIFY(call(1)[1].contains("[[100,150],[0,0],[399,0],[300,150],1,"));
        QVERIFY(call(2)[1].contains("[[0,199],[0,0],[350,199],[350,250],1,"));
    }

    void deskewIsForOneBit() {
        QCOMPARE(run("mnuEffectsAutoDeskew"), QStringList(copied));
        QCOMPARE(studio_->user.said(),
                 QStringList("|You can only use AutoDeskew on 1-bit images."));
        QCOMPARE(steps(), 0);
        studio_->form->ImgX->Info().ConvertType("no undo", 0);
        QCOMPARE(between(run("mnuEffectsAutoDeskew")),
                 QStringList(R"(imgxAction Geometry.AutoDeskew [2,4,1,0,0,0,0,""])"));
        studio_->select(selection);
        studio_->state.HasSelection = false;
        QCOMPARE(between(run("mnuEffectsAutoDeskew")),
                 QStringList(R"(imgxAction Geometry.AutoDeskew [2,4,1,5,7,31,21,""])"));
        QVERIFY(studio_->user.said().isEmpty());
    }

    void warpWaitsForItsLine() {
        engine::ImgX& shown = *studio_->form->ImgX;
        const Snapshot before = snapshot(studio_->picture());
        const int mode = shown.ToolMode();
        bool cancel = false;
        emit shown.RegionFinished(3, 4, 30, 20, &cancel);
        QVERIFY(!cancel); // not asked for

        QVERIFY(between(run("mnuEffects", 23)).contains("imgxAction ImgX.ToolMode [7]"));
        QCOMPARE(studio_->user.said(), QStringList("|Drag a line to warp the image"));
        QVERIFY(studio_->form->WarpArmed);
        QCOMPARE(shown.ToolMode(), 7);
        QVERIFY(snapshot(studio_->picture()) == before);
        run("mnuEffects", 23); // twice in a row
        clean();
        emit shown.RegionFinished(3, 4, 30, 20, &cancel);
        QVERIFY(cancel);
        QVERIFY(studio_->journal.engineCalls().contains(
            R"(ImgX Geometry.Warp [3,4,30,20,""] -> Warp)"));
        QCOMPARE(steps(), 1);
        QVERIFY(!studio_->form->WarpArmed && !studio_->form->Saved);
        QCOMPARE(shown.ToolMode(), mode);
        cancel = false;
        emit shown.RegionFinished(3, 4, 30, 20, &cancel);
        QVERIFY(!cancel);
        QCOMPARE(steps(), 1);
    }
};

QTEST_MAIN(DecisionsTest)
#include "decisions.moc"
