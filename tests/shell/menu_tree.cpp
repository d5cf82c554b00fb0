// The menu tree against a list typed from the manual's tables: names, indexes, captions, order,
// shortcuts and the state each item has by design.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QtTest>

#include "shell/menu/tree.h"
#include "shell/menu_tree.h"

using namespace kvn::shell;

namespace {

// One line an item: two blanks of indent a level, name with index, '|', caption, then what is
// special by design: keys in braces, '*' can be checked, '+' is checked, '-' disabled. Lines
// that only part groups optically are left out.
const char* const expected = R"(mnumFile|&File
  mnuOpen|&Open...|{Ctrl+O}
  mnuOpenURL|Open from &URL...
  mnuImport|&Import
    mnuSelectTwain|Select Twain Source...
    mnuAcquireTwain|Acquire Twain Image
    mnuCaptureScreen|Capture Screen
    mnuCaptureRect|Capture Rectangle
    mnuCaptureWindow|Capture Window
  mnuNew|&New...|{Ctrl+N}
  mnuClose|&Close|{Ctrl+W}
  mnuSaveAs|Save &As...|{Ctrl+Shift+S}
  mnuSave|&Save|{Ctrl+S}
  mnuEncryption|Encryption
    mnuDemosEncrypt|&Encrypt Image
    mnuDemosDecrypt|&Decrypt Image
  mnuPageSetup|Page Setup...
  mnuPrint|Print
    mnuPrintSettings(0)|Top Left
    mnuPrintSettings(1)|Centered
    mnuPrintSettings(2)|Fit to Page|{Ctrl+P}
  mnuExit|E&xit
mnumEdit|&Edit
  mnuUndo|&Undo|{Ctrl+Z}
  mnuRedo|&Redo|{Ctrl+Y}
  mnuCut|Cut|{Ctrl+X}
  mnuCopy|&Copy|{Ctrl+C}
  mnuPaste|&Paste|{Ctrl+V}
  mnuDelete|&Delete|{Del}
  mnuSelectAll|Select All|{Ctrl+A}
mnuView|&View
  mnuZoomIn|Zoom In        Ctrl++
  mnuZoomOut|Zoom Out     Ctrl+-
  mnuZoomType(1)|Best Fit
  mnuZoomType(2)|Fit to Width
  mnuZoomType(3)|Fit to Height
  mnuZoomWindow|Zoom Window|*
  mnuDemosHistogram|Histogram Window|*
mnumImages|&Images
  mnuImages(0)|&Images
    mnuImagesImage(0)|No Image|*
  mnuImages(1)|-
  mnuImages(2)|Current &Image Type
    mnuImageType(0)|1-bit (2 color)|*
    mnuImageType(1)|8-bit Colormapped|*
    mnuImageType(2)|8-bit Colormapped w/ Alpha|*
    mnuImageType(3)|8-bit Grayscale|*
    mnuImageType(4)|16-bit Grayscale w/ Alpha|*
    mnuImageType(5)|24-bit RGB|*
    mnuImageType(6)|32-bit RGB w/ Alpha|*
  mnuImages(3)|-
  mnuImages(4)|Next Image
  mnuImages(5)|Previous Image
  mnuImages(6)|Add Image...
  mnuImages(7)|Remove Image
  mnuImages(8)|-
  mnuImages(9)|Append Image to TIFF
  mnuImages(10)|-
  mnuImages(11)|Set Background Image...
  mnuImages(12)|Clear Background Image
  mnuDrawImage|Draw Image...
mnumChannels|&Channels
  mnuChannels(0)|Alpha
    mnuChannelsAlpha(0)|Add Alpha Mask
      mnuChannelsAlphaAddMask(0)|From File
      mnuChannelsAlphaAddMask(1)|-
    mnuChannelsAlpha(1)|Add Alpha by Color...
    mnuChannelsAlpha(2)|Set Constant Alpha...
    mnuChannelsAlpha(3)|Invert Alpha
    mnuChannelsAlpha(4)|Flatten onto Color...
    mnuChannelsAlpha(5)|Antialias (Blur Alpha)
    mnuChannelsAlpha(6)|-
    mnuChannelsAlpha(7)|Clear
  mnuChannels(1)|RGB
    mnuChannelsRGB(0)|Adjust...
    mnuChannelsRGB(1)|Shift...
    mnuChannelsRGB(2)|Swap
      mnuChannelsRGBSwap(0)|Red && Green
      mnuChannelsRGBSwap(1)|Red && Blue
      mnuChannelsRGBSwap(2)|Blue && Green
  mnuChannels(2)|HSL
    mnuChannelsAdjust(0)|Adjust...
mnumDraw|&Draw
  mnuDraw(0)|Setup
    mnuDrawSetup(0)|Color...
    mnuDrawSetup(1)|Antialias
      mnuDrawAntialias(0)|None (0)|*
      mnuDrawAntialias(1)|A Little (1)|*+
      mnuDrawAntialias(2)|A Little More (10)|*
      mnuDrawAntialias(3)|A Lot (100)|*
    mnuDrawSetup(2)|Thickness
      mnuDrawThickness(0)|1|*+
      mnuDrawThickness(1)|2|*
      mnuDrawThickness(2)|3|*
      mnuDrawThickness(3)|4|*
      mnuDrawThickness(4)|5|*
      mnuDrawThickness(5)|6|*
      mnuDrawThickness(6)|7|*
      mnuDrawThickness(7)|8|*
      mnuDrawThickness(8)|9|*
      mnuDrawThickness(9)|10|*
      mnuDrawThickness(10)|15|*
      mnuDrawThickness(11)|20|*
      mnuDrawThickness(12)|30|*
      mnuDrawThickness(13)|50|*
    mnuDrawSetup(3)|Line Style
      mnuDrawLineStyle(0)|Solid|*+
      mnuDrawLineStyle(1)|Dash|*
      mnuDrawLineStyle(2)|Dot|*
      mnuDrawLineStyle(3)|Dash Dot|*
      mnuDrawLineStyle(4)|Dash Dot Dot|*
    mnuDrawSetup(4)|Fill Style
      mnuDrawFillStyle(0)|None|*+
      mnuDrawFillStyle(1)|Horizontal|*
      mnuDrawFillStyle(2)|Vertical|*
      mnuDrawFillStyle(3)|Forward Diagonal|*
      mnuDrawFillStyle(4)|Backward Diagonal|*
      mnuDrawFillStyle(5)|Cross|*
      mnuDrawFillStyle(6)|Diagonal Cross|*
      mnuDrawFillStyle(7)|Solid|*
    mnuDrawSetup(5)|Opacity
      mnuDrawOpacity(0)|100%|*+
      mnuDrawOpacity(1)|90%|*
      mnuDrawOpacity(2)|80%|*
      mnuDrawOpacity(3)|70%|*
      mnuDrawOpacity(4)|60%|*
      mnuDrawOpacity(5)|50%|*
      mnuDrawOpacity(6)|40%|*
      mnuDrawOpacity(7)|30%|*
      mnuDrawOpacity(8)|20%|*
      mnuDrawOpacity(9)|10%|*
    mnuDrawSetup(6)|Texture
      mnuDrawTexture(0)|Select...
      mnuDrawTexture(1)|Presets
        mnuDrawTextureEx(0)|Puzzle Pieces
        mnuDrawTextureEx(1)|Candy Hearts
        mnuDrawTextureEx(2)|Triangle Tiles
      mnuDrawTexture(2)|Gradient
        mnuDrawTextureGradient(0)|Horizontal
        mnuDrawTextureGradient(1)|Vertical
      mnuDrawTexture(3)|-
      mnuDrawTexture(4)|Clear
      mnuDrawTexture(5)|-
      mnuDrawTexture(6)|Stretch to action
      mnuDrawTexture(7)|Stretch to image
      mnuDrawTexture(8)|Tile
mnumEffects|&Effects
  mnuEffectsAutoDeskew|AutoDeskew
  mnuEffects(6)|-
  mnuEffects(7)|Apply Palette
    mnuEffectsPalette(0)|Web Palette
    mnuEffectsPalette(1)|System Palette
    mnuEffectsPalette(2)|16 Color Palette
    mnuEffectsPalette(3)|Black && White Palette
    mnuEffectsPalette(4)|Palette File...
    mnuEffectsPaletteDash|-
    mnuEffectsPalDisplayPalFile|Display Palette File...
    mnuEffectsDitherPalette|Dither Palette|*+
  mnuEffects(8)|Dither
    mnuEffectsDither(0)|2 Colors
    mnuEffectsDither(1)|4 Colors
    mnuEffectsDither(2)|8 Colors
    mnuEffectsDither(3)|16 Colors
    mnuEffectsDither(4)|32 Colors
    mnuEffectsDither(5)|64 Colors
    mnuEffectsDither(6)|128 Colors
    mnuEffectsDither(7)|256 Colors
    mnuEffectsDither(8)|-
    mnuEffectsDither(9)|X Colors...
  mnuEffects(9)|Replace a Color...
  mnuEffects(10)|-
  mnuEffects(11)|&Add Border
  mnuEffects(12)|Bevel Edge
  mnuEffects(13)|Crackle
  mnuEffects(14)|Drop Shadow
    mnuEffectsDropShadow(0)|Custom...
    mnuEffectsDropShadow(1)|-
    mnuEffectsDropShadow(2)|Right-Bottom light
    mnuEffectsDropShadow(3)|Right-Bottom Heavy
    mnuEffectsDropShadow(4)|Extra Heavy
    mnuEffectsDropShadow(5)|Right-Bottom Color
    mnuEffectsDropShadow(6)|Left-Bottom Color
  mnuEffects(15)|Gauzy
    mnuEffectsGauzy(0)|Custom...
    mnuEffectsGauzy(1)|-
    mnuEffectsGauzy(2)|Meduim
    mnuEffectsGauzy(3)|Light Black
    mnuEffectsGauzy(4)|Heavy
    mnuEffectsGauzy(5)|Light White
  mnuEffects(16)|Histogram Stretch
  mnuEffects(17)|Histogram Equalize
  mnuEffects(18)|Motion Blur
  mnuEffects(19)|Perspective
    mnuEffectsPerspectiveExamples(0)|Right to Left
    mnuEffectsPerspectiveExamples(1)|Bottom to Top
    mnuEffectsPerspectiveExamples(2)|Right Bottom to Left
    mnuEffectsPerspectiveExamples(3)|Right Bottom to Top
    mnuEffectsPerspectiveExamples(4)|Center to Left
    mnuEffectsPerspectiveExamples(5)|Center
  mnuEffects(20)|Scribble
    mnuEffectsScribble(0)|Custom...
    mnuEffectsScribble(1)|-
    mnuEffectsScribble(2)|Heavy
    mnuEffectsScribble(3)|Extra Heavy
    mnuEffectsScribble(4)|Noisy
    mnuEffectsScribble(5)|Random
  mnuEffects(21)|Stipple
    mnuEffectsStipple(0)|Custom...
    mnuEffectsStipple(1)|-
    mnuEffectsStipple(2)|Noisy
    mnuEffectsStipple(3)|Glass
    mnuEffectsStipple(4)|Noisy Glass
    mnuEffectsStipple(5)|Extra Noisy
  mnuEffects(22)|&Thumbnail
    mnuEffectsThumbnail(0)|With Decimation
    mnuEffectsThumbnail(1)|Without Decimation
  mnuEffects(23)|Warp Image...
  mnuEffects(24)|Emboss Shape
  mnuEffects(25)|-
  mnuEffects(26)|HugoNoise...
  mnuEffects(27)|PerlinNoise...
mnumFilters|Filters
  mnuFilters(1)|Blur
    mnuFiltersBlurAction(0)|25%
    mnuFiltersBlurAction(1)|50%
    mnuFiltersBlurAction(2)|75%
    mnuFiltersBlurAction(3)|100%
    mnuFiltersBlurAction(4)|25% (Gaussian)
    mnuFiltersBlurAction(5)|50% (Gaussian)
    mnuFiltersBlurAction(6)|75% (Gaussian)
    mnuFiltersBlurAction(7)|100% (Gaussian)
    mnuFiltersBlurAction(8)|300% (Gaussian)
    mnuFiltersBlurAction(9)|500% (Gaussian)
  mnuFilters(3)|Colorize...
  mnuFilters(4)|Despeckle
  mnuFilters(5)|Edge Detection
    mnuEdgeDetectionAction(0)|25%
    mnuEdgeDetectionAction(1)|50%
    mnuEdgeDetectionAction(2)|75%
    mnuEdgeDetectionAction(3)|100%
  mnuFilters(33)|Canny Edge Detector
  mnuFilters(6)|Emboss...
  mnuFilters(9)|Median Cut
  mnuFilters(10)|Morpological Filters
    mnuFiltersMorpho(0)|Dilation
    mnuFiltersMorpho(1)|Erosion
    mnuFiltersMorpho(2)|Open
    mnuFiltersMorpho(3)|Close
    mnuFiltersMorpho(4)|TopHat
  mnuFilters(11)|Mosaic...
  mnuFilters(12)|Negative
    mnuFiltersNegativeWhite|White
    mnuFiltersNegativeCols(0)|Red
    mnuFiltersNegativeCols(1)|Green
    mnuFiltersNegativeCols(2)|Blue
    mnuFiltersNegativeColor|By Color...
  mnuFilters(13)|Red Eye Reduction
  mnuFilters(14)|Sharpen
    mnuFiltersSharpenAction(0)|25%
    mnuFiltersSharpenAction(1)|50%
    mnuFiltersSharpenAction(2)|75%
    mnuFiltersSharpenAction(3)|100%
  mnuFilters(15)|Soften
    mnuFiltersSoftenAction(0)|25%
    mnuFiltersSoftenAction(1)|50%
    mnuFiltersSoftenAction(2)|75%
    mnuFiltersSoftenAction(3)|100%
  mnuFilters(16)|Unsharp Mask
    mnuFiltersUnsharpMaskAction(0)|Normal
    mnuFiltersUnsharpMaskAction(1)|Highlights
    mnuFiltersUnsharpMaskAction(2)|Color Etch
    mnuFiltersUnsharpMaskAction(3)|Halo Effect
  mnuFilters(18)|-
  mnuFilters(19)|Custom Filter
    mnuFiltersCustomFilterOilPainting|Oil Painting
    mnuFiltersCustomFilterColorEmboss|Color Relief
  mnuFilters(20)|Custom Matrix
    mnuFiltersCustomMatrixNightLine|Night Line
    mnuFiltersCustomMatrixPurpleHaze|Purple Haze
  mnuFilters(22)|Complex Filters
    mnuFiltersDemosPatchWork|PatchWork Mosaic
    mnuFiltersDemosCharcoal|Charcoal
    mnuFiltersDemosFlakyPaint|Flaky Paint
  mnuSpecialFilters|Special Filters
    mnuFilters(17)|Vibration
      mnuFiltersVibrationAction(0)|25%
      mnuFiltersVibrationAction(1)|50%
      mnuFiltersVibrationAction(2)|75%
      mnuFiltersVibrationAction(3)|100%
    mnuFilters(34)|Duotone...
    mnuFilters(36)|Halftone...
    mnuFilters(38)|Tint...
  mnuAdjustFilters|Adjustment Filters
    mnuFilters(0)|AutoBrightness
    mnuFilters(2)|Brightness && Contrast...
    mnuFilters(7)|Gamma
      mnuFiltersGammaAction(0)|Decrease a Little
      mnuFiltersGammaAction(1)|Decrease a Lot
      mnuFiltersGammaAction(2)|Increase a Little
      mnuFiltersGammaAction(3)|Increase a Lot
    mnuFilters(8)|Intensity
      mnuFiltersIntensifyAction(0)|Increase by 25
      mnuFiltersIntensifyAction(1)|Increase by 50
      mnuFiltersIntensifyAction(2)|Increase by 100
      mnuFiltersIntensifyAction(3)|Decrease by 25
      mnuFiltersIntensifyAction(4)|Decrease by 50
      mnuFiltersIntensifyAction(5)|Decrease by 100
  mnuFilters(23)|Normalized Difference
  mnuMeanFilters|Mean Filters
    mnuFilters(24)|Arithmetic Mean
    mnuFilters(25)|Harmonic Mean
    mnuFilters(30)|Geometric Mean
    mnuFilters(26)|Yp Mean
  mnuFilters(31)|Noise...
  mnuFilters(32)|Threshold
  mnuFilters(35)|Posterize
  mnuFilters(37)|Solarize
  mnuFilters(39)|Saturation...
  mnuFilters(40)|HighPass...
mnumTransforms|Transforms
  mnuTransforms(0)|Spin
  mnuTransforms(1)|Spin Wave...
  mnuTransforms(2)|Lens...
  mnuTransforms(3)|Pinch...
  mnuTransforms(4)|Random...
  mnuTransforms(5)|Line Slice...
  mnuTransforms(6)|Zig Zag...
  mnuTransforms(7)|Wave...
  mnuTransforms(8)|Ripple...
  mnuTransforms(9)|Offset...
  mnuTransforms(10)|Wow...
  mnuTransforms(11)|Marble...
  mnuTransforms(12)|Perlin...
  mnuTransforms(13)|Bump Map|-
  mnuDemosFlipLines|Flip Alternating Lines
    mnuDemosFlipLinesH|&Horizontal
    mnuDemosFlipLinesV|&Vertical
  mnuDemosGrid|Draw Color &Grid
  mnuEffects(0)|&Crop
    mnuEffectsCrop(0)|Selection
    mnuEffectsCrop(1)|AutoCrop
    mnuEffectsCrop(2)|-
    mnuEffectsCrop(3)|Top Left
    mnuEffectsCrop(4)|Top Right
    mnuEffectsCrop(5)|Bottom Left
    mnuEffectsCrop(6)|Bottom Right
    mnuEffectsCrop(7)|Center
  mnuEffects(1)|&Flip
    mnuFlip(0)|&Horizontal
    mnuFlip(1)|&Vertical
  mnuEffects(2)|&Resize...
  mnuEffects(3)|Resize Can&vas...
  mnuEffects(4)|R&otate...
  mnuEffects(5)|Skew...
  mnuTransforms(14)|Custom|-
mnumMetaData|&Metadata|-
  mnuMetadata(0)|EXIF Tags...
  mnuMetadata(1)|EXIF Thumbnail
  mnuMetadata(2)|IPTC Tags...
  mnuMetadata(3)|JPEG Markers to Save...
  mnuMetadata(4)|Copy Markers to existing image
mnuFileSettings|&Settings
  mnuSettings(0)|Image &Save Settings
  mnuSettings(1)|&Alpha Display
  mnuSettings(2)|&Dither Error
  mnuSettings(3)|Double &Buffer|*+
  mnuAntialias|Antialias|*
mnuWindow|&Window
  ArrHorizontal|Tile &Horizontal
  ArrVertival|Tile &Vertical
  Cascade|&Cascade
mnuHelp|&Help
  mnuAbout|&About
  mnuIndex|Help &Index|{F1}
  mnuUpdate|&Check Update...
)";

bool partsOnlyOptically(const QAction& action) {
    return action.isSeparator() && action.objectName().contains(QStringLiteral("Dash")) &&
           action.objectName() != QStringLiteral("mnuEffectsPaletteDash");
}

QString lineOf(const QAction& action, int level) {
    QString line = QString(2 * level, u' ') + action.objectName() + u'|';
    if (action.isSeparator()) return line + QStringLiteral("-\n");
    line += action.text();
    QString special;
    if (!action.shortcut().isEmpty())
        special += u'{' + action.shortcut().toString(QKeySequence::PortableText) + u'}';
    if (action.isCheckable()) special += u'*';
    if (action.isChecked()) special += u'+';
    if (!action.isEnabled()) special += u'-';
    return line + (special.isEmpty() ? QString() : u'|' + special) + u'\n';
}

QString dump(const QList<QAction*>& actions, int level = 0) {
    QString text;
    for (const QAction* action : actions) {
        if (partsOnlyOptically(*action)) continue;
        text += lineOf(*action, level);
        if (action->menu()) text += dump(action->menu()->actions(), level + 1);
    }
    return text;
}

} // namespace

class MenuTreeTest : public QObject {
    Q_OBJECT

    QMenuBar bar_;
    MenuTree tree_{bar_, [](const menu::Item&) { return true; }};

  private slots:
    void standsAsTyped() {
        const QStringList want = QString::fromUtf8(expected).split(u'\n');
        const QStringList have = dump(bar_.actions()).split(u'\n');
        for (int i = 0; i < std::min(want.size(), have.size()); ++i)
            QCOMPARE(have[i], want[i]);
        QCOMPARE(have.size(), want.size());
    }

    // Every item explains itself, and no key means two things.
    void explainsItselfAndSharesNoKey() {
        QSet<QString> keys;
        for (const QAction* action : bar_.findChildren<QAction*>()) {
            if (action->isSeparator() || !action->objectName().size()) continue;
            QVERIFY2(!action->statusTip().isEmpty(), qPrintable(action->objectName()));
            for (const QKeySequence& key : action->shortcuts()) {
                QVERIFY2(!keys.contains(key.toString()), qPrintable(key.toString()));
                keys.insert(key.toString());
            }
        }
    }

    // A click by itself changes no mark: the command behind it does.
    void clickLeavesTheMark() {
        QSignalSpy chosen(&tree_, &MenuTree::chosen);
        QAction* item = tree_.action(QStringLiteral("mnuSettings"), 3);
        item->trigger();
        QVERIFY(item->isChecked());
        QCOMPARE(chosen.count(), 1);
    }

    void groupGrowsAndShrinksBehindItsDesign() {
        const QString group = QStringLiteral("mnuImagesImage");
        tree_.resizeGroup(group, 1, 3);
        tree_.setCaption(group, 3, QStringLiteral("3: 10 x 10"));
        tree_.setChecked(group, 3, true);
        const QMenu* menu = tree_.menuOf(QStringLiteral("mnuImages"), 0);
        QCOMPARE(menu->actions().size(), 4);
        QCOMPARE(menu->actions().last()->text(), QStringLiteral("3: 10 x 10"));
        QCOMPARE(menu->actions().last()->objectName(), QStringLiteral("mnuImagesImage(3)"));
        QVERIFY(tree_.isChecked(group, 3));

        tree_.resizeGroup(group, 1, 0);
        QCOMPARE(menu->actions().size(), 1);
        tree_.setCaption(group, 2, QStringLiteral("gone")); // harmless

        // The mask list stands between two other items of its menu.
        const QString masks = QStringLiteral("mnuChannelsAlphaAddMask");
        tree_.resizeGroup(masks, 2, 2);
        tree_.resizeGroup(masks, 2, 1);
        QStringList names;
        for (const QAction* item : tree_.menuOf(QStringLiteral("mnuChannelsAlpha"), 0)->actions())
            names.append(item->objectName());
        QCOMPARE(names, QStringList({masks + QStringLiteral("(0)"), masks + QStringLiteral("(1)"),
                                     masks + QStringLiteral("(2)")}));
    }

    // The choice of a grown item carries its own index.
    void grownItemReportsItsIndex() {
        const QString group = QStringLiteral("mnuImagesImage");
        tree_.resizeGroup(group, 1, 2);
        int index = -1;
        const auto link = connect(&tree_, &MenuTree::chosen, this,
                                  [&](const menu::Item& item) { index = item.index; });
        tree_.action(group, 2)->trigger();
        disconnect(link);
        QCOMPARE(index, 2);
        tree_.resizeGroup(group, 1, 0);
    }

    // What is not built stays grey, says so, and still keeps what the rules decided.
    void unbuiltItemStaysGrey() {
        QMenuBar bar;
        MenuTree tree(bar, [](const menu::Item& item) { return item.member != "Save"; });
        tree.setAllEnabled(true);
        const QString save = QStringLiteral("mnuSave");
        QVERIFY(!tree.action(save)->isEnabled());
        QVERIFY(tree.isEnabled(save, menu::single));
        QVERIFY(tree.action(save)->statusTip().contains(QStringLiteral("not available yet")));
        QVERIFY(tree.action(QStringLiteral("mnuSaveAs"))->isEnabled());
    }
};

QTEST_MAIN(MenuTreeTest)
#include "menu_tree.moc"
