#include "shell/menu_rules.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QVariant>

#include "basic/error.h"
#include "document/commands.h"
#include "document/frmMain.h"
#include "document/program_state.h"
#include "engine/metadata.h"
#include "shell/menu_tree.h"

namespace kvn::shell {

using document::frmMain;

namespace {

struct ItemName {
    const char* name;
    int index = menu::single;
};

constexpr ItemName alwaysEnabled[] = {
    {"mnuOpen"},         {"mnuNew"},           {"mnumFile"},        {"mnumEdit"},
    {"mnuWindow"},       {"mnuHelp"},          {"mnumFilters"},     {"mnumImages"},
    {"mnumEffects"},     {"mnumTransforms"},   {"mnumDraw"},        {"mnumChannels"},
    {"mnumMetaData"},    {"mnuOpenURL"},       {"mnuImport"},       {"mnuSelectTwain"},
    {"mnuAcquireTwain"}, {"mnuCaptureScreen"}, {"mnuCaptureRect"},  {"mnuCaptureWindow"},
    {"mnuSettings", 0},  {"mnuSettings", 1},   {"mnuFileSettings"}, {"mnuSettings", 2},
    {"mnuSettings", 3},  {"mnuExit"},          {"mnuView"},         {"mnuAbout"},
    {"mnuIndex"},        {"mnuUpdate"},        {"mnuPageSetup"},
};

constexpr const char* imageMenus[] = {"mnumTransforms", "mnumFilters",  "mnumEffects", "mnumImages",
                                      "mnumDraw",       "mnumChannels", "mnumMetaData"};

QString latin(const char* text) {
    return QString::fromLatin1(text);
}

frmMain& activeOrThrow(document::DocumentHost& host) {
    if (frmMain* form = host.ActiveForm()) return *form;
    throw RuntimeError(errors::objectNotSet, "Object variable or With block variable not set",
                       "Kestrelvane");
}

// A member of the document read by its name, as the program's late-bound calls are.
bool boolMember(const frmMain& form, const char* name) {
    const QVariant value = form.property(name);
    if (!value.isValid())
        throw RuntimeError(errors::memberNotFound, "Object doesn't support this property or method",
                           "Kestrelvane");
    return value.toBool();
}

// The rules go on with their next statement after any failure.
template <typename Statement>
void resumeNext(Statement statement) {
    try {
        statement();
    } catch (const std::exception&) {
    }
}

bool clipboardHasPicture() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data && (data->hasImage() || data->hasFormat(QStringLiteral("image/x-emf")) ||
                    data->hasFormat(QStringLiteral("image/emf")) ||
                    data->hasFormat(QStringLiteral("image/x-wmf")) ||
                    data->hasFormat(QStringLiteral("image/wmf")));
}

} // namespace

void MenuRules::EnDisMenuItems(bool enable) {
    menus_.setAllEnabled(enable);
    // No document has this member, so both reads fail and the items keep what they just got.
    for (const char* name : {"mnuCopy", "mnuCut"})
        resumeNext([&] {
            menus_.setEnabled(latin(name), menu::single,
                              boolMember(activeOrThrow(host_), "bRegionSelected"));
        });
    menus_.setEnabled(QStringLiteral("mnuSaveAs"), menu::single, enable);
    menus_.setEnabled(QStringLiteral("mnuSave"), menu::single, enable);
    for (const ItemName& item : alwaysEnabled)
        menus_.setEnabled(latin(item.name), item.index, true);
    if (state_.IsAnyOpened()) metadataItems();
}

void MenuRules::metadataItems() {
    const QString group = QStringLiteral("mnuMetadata");
    const auto info = [&] { return activeOrThrow(host_).ImgX->Image().Info(); };
    resumeNext([&] { menus_.setEnabled(group, 0, info().Exif().Count() > 0); });
    resumeNext([&] { menus_.setEnabled(group, 1, info().Exif().HasThumbnail()); });
    resumeNext([&] { menus_.setEnabled(group, 2, info().Iptc().Count() > 0); });
}

void MenuRules::ImageMenusEnabled(bool enable) {
    for (const char* name : imageMenus)
        menus_.setEnabled(latin(name), menu::single, enable);
}

void MenuRules::editPulledDown() {
    if (!state_.IsAnyOpened()) return;
    menus_.setEnabled(QStringLiteral("mnuCopy"), menu::single, state_.HasSelection);
    menus_.setEnabled(QStringLiteral("mnuCut"), menu::single, state_.HasSelection);
    menus_.setEnabled(QStringLiteral("mnuPaste"), menu::single, clipboardHasPicture());
    const frmMain* form = host_.ActiveForm();
    if (!form) return;
    menus_.setEnabled(QStringLiteral("mnuUndo"), menu::single, form->ImgX->Undos() != 0);
    menus_.setEnabled(QStringLiteral("mnuRedo"), menu::single, form->ImgX->Redos() != 0);
    menus_.setDetail(QStringLiteral("mnuUndo"), menu::single, form->ImgX->UndoLabel());
    menus_.setDetail(QStringLiteral("mnuRedo"), menu::single, form->ImgX->RedoLabel());
}

void MenuRules::importPulledDown(bool anyScanner) {
    menus_.setEnabled(QStringLiteral("mnuAcquireTwain"), menu::single, anyScanner);
    menus_.setEnabled(QStringLiteral("mnuSelectTwain"), menu::single, anyScanner);
}

void MenuRules::imagesPulledDown() {
    if (frmMain* form = host_.ActiveForm())
        document::callMember(*form, QStringLiteral("Images_Menu"));
}

} // namespace kvn::shell
