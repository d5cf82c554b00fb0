// A frame with one open picture of any type, and what the commands of the effects do to it.
#pragma once

#include "engine/operations.h"
#include "shell/frame.h"

namespace kvn::test {

// Pixels and palette, to be compared as a whole.
struct Snapshot {
    int type = 0, width = 0, height = 0;
    QByteArray pixels;
    std::vector<quint32> colors; // with alpha, read pixel by pixel, for what palettes do

    bool operator==(const Snapshot&) const = default;
};

inline Snapshot snapshot(const engine::Image& image) {
    const engine::PixelArray array = image.Export().GetPixels();
    Snapshot shot{array.type, array.width, array.height, array.bytes, {}};
    for (int y = 0; y < array.height; y += 3)
        for (int x = 0; x < array.width; x += 3) {
            const engine::Color color = image.Info().GetPixel(x, y);
            shot.colors.push_back(color.RgbGet() | quint32{color.Alpha()} << 24);
        }
    return shot;
}

struct Studio : Frame {
    Journal journal{engine.trace()};
    document::frmMain* form = nullptr;

    Studio() { start(); }

    // Opens a picture with edges, slopes and alpha, and makes it of the type.
    void openType(int type, int width = 64, int height = 48) {
        QImage image(width, height, QImage::Format_ARGB32);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                image.setPixel(x, y,
                               qRgba(x * 4 % 256, y * 5 % 256, (x ^ y) & 16 ? 200 : 30,
                                     x < width / 2 ? 255 : (x * 7 + y) % 256));
        const QString path = folder.filePath("studio.png");
        image.save(path);
        user.files.push_back({true, path, 1});
        choose("mnuOpen");
        form = windows().ActiveForm();
        form->ImgX->Info().ConvertType("no undo", type);
        form->Saved = true;
    }
    // As a drag with the selection tool leaves it.
    void select(const QRect& rect) {
        engine::ImgX& shown = *form->ImgX;
        shown.setHasRegion(true);
        shown.setRegionLeft(rect.x());
        shown.setRegionTop(rect.y());
        shown.setRegionWidth(rect.width());
        shown.setRegionHeight(rect.height());
        emit shown.RegionChanged(rect.x(), rect.y(), rect.width(), rect.height());
    }
    engine::Image picture() { return form->ImgX->Image(); }

    // The engine calls of one menu item, or of any work, without the steps they record.
    QStringList run(const char* menu, int index = -1) {
        return calls([&] { choose(menu, index); });
    }
    QStringList calls(const std::function<void()>& work) {
        journal.clear();
        work();
        QStringList calls = journal.engineCalls();
        for (QString& call : calls)
            call = call.section(" -> ", 0, 0);
        return calls;
    }
};

} // namespace kvn::test
