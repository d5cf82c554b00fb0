// Every command of the effects and filters, from the menu item to the pixels, held against the
// typed list beside this file: for each image type, with and without a selection.
#include "effects/support/studio.h"
#include "effects/support/typed_catalogue.h"

using namespace kvn;
using namespace kvn::test;

namespace {

const QRect selection(5, 7, 31, 21);

// What no list can tell: these are tried one by one in another file.
const QStringList elsewhere{
    "mnuEffectsAutoDeskew",    "mnuEffectsPalette(4)", "mnuEffectsPalDisplayPalFile",
    "mnuEffectsDitherPalette", "mnuEffects(23)",       "mnuFilters(2)",
    "mnuFilters(3)",           "mnuFilters(13)",       "mnuFiltersNegativeColor"};

QString withSize(QString text, QSize size) {
    text.replace("W+6", QString::number(size.width() + 6));
    text.replace("H+6", QString::number(size.height() + 6));
    if (text == "W") return QString::number(size.width());
    if (text == "H") return QString::number(size.height());
    return text;
}

// The calls of an item, with the frame around them.
QStringList framed(const TypedItem& item, bool selected) {
    QStringList calls{R"(imgxAction Import.FromImgX ["@ImgX",0,""])"};
    if (selected) calls += R"(imgxAction Geometry.Crop [5,7,31,21,""])";
    const QSize size = selected ? selection.size() : QSize(64, 48);
    for (const QString& call : item.calls)
        calls +=
            (call.section(u' ', 0, 0).contains(u'.') ? "imgxAction " : "") + withSize(call, size);
    calls += selected ? R"(ImgX Draw.Image ["@imgxAction",5,7,null,1,true,""])"
                      : R"(ImgX Import.FromImgX ["@imgxAction",0,""])";
    return calls;
}

// A shorter expectation ends in three points. Under a selection the corners of the perspective
// examples are others than the list's.
bool agree(const QString& have, const QString& want, bool selected) {
    if (want.endsWith("...")) return have.startsWith(want.chopped(3));
    if (want.startsWith("ImgX Geometry."))
        return selected ? have.startsWith(want.section(u' ', 0, 1)) : have == want;
    return have == want;
}

} // namespace

class CatalogueTest : public QObject {
    Q_OBJECT

    TypedCatalogue list_;
    std::unique_ptr<Studio> studio_;
    QStringList problems_;
    bool selected_ = false;

    void complain(const TypedItem& item, const QString& what) {
        problems_ += item.name() + ": " + what;
    }

    void answer(const TypedItem& item, dialogs::frmDialog& dialog) {
        if (dialog.windowTitle() != item.title) complain(item, "title " + dialog.windowTitle());
        if (dialog.parentWidget() != studio_->window.get()) complain(item, "owner");
        if (studio_->form->frmDlg != &dialog) complain(item, "not the document's dialog");
        if (dialog.ControlCount() != int(item.rows.size())) return complain(item, "row count");
        const engine::Info copy = studio_->form->imgxAction->Info();
        for (int i = 0; i < dialog.ControlCount(); ++i) {
            const TypedRow& want = item.rows[std::size_t(i)];
            const TypedRow have = shownRow(dialog, i, want.kind);
            if (have.label != want.label || have.items != want.items ||
                have.start != withSize(want.start, {copy.Width(), copy.Height()}))
                complain(item, "row " + have.label + " = " + have.start);
        }
        // From the last row up, so that a kept aspect is switched off before a size is typed.
        for (int i = dialog.ControlCount() - 1; i >= 0; --i)
            typeRow(dialog, i, item.rows[std::size_t(i)]);
    }

    void compareCalls(const TypedItem& item, const QStringList& have) {
        const QStringList want = framed(item, selected_);
        for (int i = 0; i < std::max(have.size(), want.size()); ++i)
            if (!agree(have.value(i), want.value(i), selected_))
                return complain(item, "call " + have.value(i) + " for " + want.value(i));
    }

    // Back and forth through the steps the item left, which have to be as many as told.
    void compareSteps(const TypedItem& item, int steps, const Snapshot& before) {
        const engine::ImgX& shown = *studio_->form->ImgX;
        if (shown.Undos() != steps || shown.Redos() != 0)
            complain(item, QString("%1 steps").arg(shown.Undos()));
        if (studio_->form->Saved) complain(item, "counts as saved");
        const Snapshot after = snapshot(studio_->picture());
        if (after.width < 1 || after.pixels.isEmpty()) complain(item, "no picture");
        for (int i = 0; i < steps; ++i)
            studio_->choose("mnuUndo");
        if (snapshot(studio_->picture()) != before) complain(item, "undo differs");
        for (int i = 0; i < steps; ++i)
            studio_->choose("mnuRedo");
        if (snapshot(studio_->picture()) != after) complain(item, "redo differs");
        for (int i = 0; i < steps; ++i)
            studio_->choose("mnuUndo");
    }

    void tryOut(const TypedItem& item) {
        Studio& studio = *studio_;
        int asked = 0;
        studio.user.inDialog = [&](dialogs::frmDialog& dialog) {
            ++asked;
            answer(item, dialog);
        };
        studio.user.colors.clear();
        if (item.isPick()) studio.user.colors = {item.rows[0].label.toUInt(nullptr, 16)};
        const Snapshot before = snapshot(studio.picture());
        studio.form->Saved = true;
        compareCalls(item, studio.run(item.menu.toLatin1(), item.index));
        if (asked != int(!item.title.isEmpty())) complain(item, QString("%1 dialogs").arg(asked));
        if (studio.form->frmDlg) complain(item, "the dialog stays");
        for (const QString& text : studio.user.said())
            complain(item, "says " + text);
        const int onShown = int(item.calls.filter(QRegularExpression("^ImgX ")).size());
        compareSteps(item, 1 + onShown, before);
    }

  private slots:
    void initTestCase() { QVERIFY(list_.items.size() > 100); }

    void everyCommand_data() {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("selected");
        for (int type = 0; type < 7; ++type)
            for (const bool selected : {false, true})
                QTest::addRow("type %d%s", type, selected ? ", selection" : "") << type << selected;
    }
    void everyCommand() {
        QFETCH(int, type);
        QFETCH(bool, selected);
        studio_ = std::make_unique<Studio>();
        studio_->openType(type);
        selected_ = selected;
        if (selected) studio_->select(selection);
        studio_->form->ImgX->setUndoEnabled(false); // nothing of the opening
        studio_->form->ImgX->setUndoEnabled(true);
        problems_.clear();
        for (const TypedItem& item : list_.items)
            tryOut(item);
        studio_->form->Saved = true;
        studio_.reset();
        for (const QString& problem : problems_)
            qWarning().noquote() << problem;
        QCOMPARE(problems_.size(), 0);
    }

    void listHasEveryItem() {
        Studio studio;
        QStringList known = elsewhere;
        for (const TypedItem& item : list_.items)
            known += item.index < 0 ? item.menu : item.name();
        for (const char* menu : {"mnumEffects", "mnumFilters"})
            for (const QAction* action : studio.menus().menuOf(menu)->findChildren<QAction*>())
                if (!action->isSeparator() && !action->menu() && !action->objectName().isEmpty())
                    QVERIFY2(known.contains(action->objectName()),
                             qPrintable(action->objectName()));
    }
};

QTEST_MAIN(CatalogueTest)
#include "catalogue.moc"
