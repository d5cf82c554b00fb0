#include "document/frmMain.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QResizeEvent>
#include <QTextEdit>
#include <algorithm>

#include "basic/twips.h"
#include "dialogs/look.h"
#include "document/alpha_masks.h"
#include "document/commands.h"
#include "document/program_state.h"
#include "document/roles.h"

namespace kvn::document {
namespace {

constexpr int undoDepth = 25;

// How much smaller than its place the canvas is.
constexpr int canvasMarginX = 15, canvasMarginY = 30; // twips

template <typename Widget>
Widget* named(Widget* widget, const char* name, const QString& accessible) {
    widget->setObjectName(QString::fromLatin1(name));
    widget->setAccessibleName(accessible);
    return widget;
}

engine::ImgX* hiddenControl(const Services& services, const char* name, QWidget* parent) {
    auto* control = new engine::ImgX(services.engine, QString::fromLatin1(name), parent);
    control->hide();
    return control;
}

// A text box that the canvas shows through, until the user types into it.
QTextEdit* hiddenText(const char* name, QWidget* parent) {
    auto* box = named(new QTextEdit(parent), name, QStringLiteral("Text on the picture"));
    box->setFrameShape(QFrame::NoFrame);
    box->hide();
    return box;
}

} // namespace

frmMain::frmMain(const Services& services, QWidget* parent)
    : QWidget(parent), Dialog(services.engine), services_(services) {
    setObjectName(QStringLiteral("frmMain"));
    hide();
    makeControls();
    connectEvents();
    Dialog.setProgressTarget(ImgX->Image());
}

frmMain::~frmMain() = default;

void frmMain::makeControls() {
    picImgX = named(new QFrame(this), "picImgX", QString());
    ImgX = named(new engine::ImgX(services_.engine, QStringLiteral("ImgX"), picImgX), "ImgX",
                 QStringLiteral("Canvas"));
    ImgXBuffer = hiddenControl(services_, "ImgXBuffer", this);
    imgxAction = hiddenControl(services_, "imgxAction", this);
    imgxAction->setSinglePage(true);
    TextInput = hiddenText("TextInput", picImgX);
    TextInput2 = hiddenText("TextInput2", picImgX);

    picBottom = named(new QFrame(this), "picBottom", QStringLiteral("Pixel read-out"));
    picPixelColor =
        named(new QFrame(picBottom), "picPixelColor", QStringLiteral("Color under the pointer"));
    picPixelColor->setToolTip(picPixelColor->accessibleName());
    picPixelColor->setFrameShape(QFrame::Box);
    picPixelColor->setAutoFillBackground(true);
    picPixelColor->setFixedSize(16, 16);
    lblStatus = named(new QLabel(picBottom), "lblStatus", QString());
    lblStatus->setTextFormat(Qt::PlainText);
    lblStatus->setToolTip(QStringLiteral("The pixel under the pointer: place, palette entry, red, "
                                         "green, blue, alpha; and the picture's color depth"));
    // The blanks in the text stand in columns, and a narrow window may cut it.
    lblStatus->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* strip = new QHBoxLayout(picBottom);
    strip->setContentsMargins(4, 2, 4, 2);
    strip->addWidget(picPixelColor);
    strip->addWidget(lblStatus, 1);

    setFocusProxy(ImgX);
}

void frmMain::setDocIndex(qint16 index) {
    DocIndex = index;
    for (engine::ImgX* control : {ImgX, imgxAction, ImgXBuffer})
        control->setDoc(index);
    Dialog.setTraceIdentity(index, QStringLiteral("Dialog"));
}

// The order is fixed: what an engine trace shows of a new window.
void frmMain::load() {
    const auto scratch = [&](const char* name) {
        engine::Image image(services_.engine, QString::fromLatin1(name));
        image.setTraceIdentity(DocIndex, QString::fromLatin1(name));
        return image;
    };
    ScratchImage = scratch("ScratchImage");
    ScratchImage2 = scratch("ScratchImage2");
    services_.skins.applySkin(picBottom, QStringLiteral("Toolbar"));
    services_.skins.applySkin(lblStatus, QStringLiteral("Toolbar2"));
    Dialog.setOpenMode(1);
    Dialog.setOwner(this);
    ImgX->setUndoEnabled(true);
    ImgX->setUndoDepth(undoDepth);
    LoadAlphaMaskList(services_.menus, alphaMaskFolder(services_.state));
    if (!services_.state.IsAnyOpened()) services_.rules.ImageMenusEnabled(false);
    copyPen();
    ImgX->setDisplayOptionA(2);
    ImgX->setDisplayOptionB(4);
    ImgX->setBackColor(static_cast<quint32>(services_.state.settings.BackgroundColor));
    ScratchImage.Import().FromBytes(dialogs::customResource(QStringLiteral("BACKGROUND")), 0, {});
    ImgX->setBackdrop(ScratchImage);
    services_.rules.SelectTool(0);
    TextInput->viewport()->setAutoFillBackground(false);
    if (services_.state.IsAnyOpened()) services_.rules.ImageMenusEnabled(true);
}

void frmMain::copyPen() {
    const ProgramState& state = services_.state;
    engine::Draw draw = ImgX->Draw();
    draw.setAntialias(1.0);
    if (state.PenTexturePreset > -1)
        callMember(*this, QStringLiteral("DrawTextureEx"), state.PenTexturePreset);
    draw.setWidth(state.PenWidth);
    draw.setLineStyle(state.PenLineStyle);
    draw.setFillStyle(state.PenFillStyle);
    draw.setTextureMode(state.PenTextureMode);
}

QSize frmMain::sizeHint() const {
    return ImgX->sizeHint() +
           QSize(pixelsFromTwips(canvasMarginX),
                 pixelsFromTwips(canvasMarginY) + picBottom->sizeHint().height());
}

void frmMain::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const int strip = picBottom->sizeHint().height();
    picBottom->setGeometry(0, height() - strip, width(), strip);
    const QSize canvas(std::max(0, width() - pixelsFromTwips(canvasMarginX)),
                       std::max(0, height() - strip - pixelsFromTwips(canvasMarginY)));
    picImgX->setGeometry(QRect(QPoint(0, 0), canvas));
    ImgX->setGeometry(picImgX->rect());
}

} // namespace kvn::document
