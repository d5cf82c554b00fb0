// The program-wide state: one object, made in main, alive until the process ends. Windows get a
// reference to it.
#pragma once

#include <QPointer>
#include <QString>
#include <vector>

#include "document/commands.h"

namespace kvn::document {

class frmMain;

// The eleven settings of the program, as they are kept.
struct Settings {
    qint16 JpgQuality = 75;
    qint16 JpgSmoothing = 0;
    bool JpgProgressive = false;
    qint16 TiffCompression = 0;
    bool BmpRle = false;
    bool WmfPlaceable = true;
    bool AlphaDisplayChecker = true;
    qint32 BackgroundColor = 16777215;
    bool FlattenAlphaOnSave = true;
    qint16 DitherError = 20;
    bool DoubleBuffer = true;
};

struct ProgramState {
    // One slot per document ever opened in this run; the index is the window's DocIndex. Grows,
    // never shrinks; the slot of a window that was shown is not reused.
    std::vector<QPointer<frmMain>> Documents;
    std::vector<bool> DocumentsOpen;
    qint16 NextDocIndex = 0;

    qint16 CurrentTool = 0;
    // The last region that any document reported, in image pixels.
    double SelLeft = 0, SelTop = 0, SelWidth = 0, SelHeight = 0;
    bool HasSelection = false;

    // The pen every new document starts with.
    qint16 PenWidth = 1;
    qint32 PenLineStyle = 0;
    qint32 PenFillStyle = -1;
    double PenOpacity = 100.0;
    qint32 PenTextureMode = 2;
    qint16 PenTexturePreset = -1;

    quint32 ForeColor = 0x000000; // the wells, 24-bit values
    quint32 BackColor = 0xFFFFFF;

    Settings settings;

    // What a document can be asked to do. main fills it, folder by folder.
    CommandTable commands;

    // A document is being opened: a second one asked for from inside the message pump is refused,
    // because both would want the same slot.
    bool opening = false;

    // Where the files beside the program lie, its own folder if empty.
    QString programFolder;

    // True if any document is open; scans from the first slot and stops at the first hit.
    bool IsAnyOpened() const;
};

} // namespace kvn::document
