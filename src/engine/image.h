// Engine images and what hangs on them.
//
// An Image is a handle: copies refer to the same list of pages, and the list goes when the last
// handle goes. Without a page of its own it means the list's current page; Images.Item gives
// handles that stay with one page. Every sub-object is such a handle too and may be kept.
//
// The last argument of an operation that changes the picture is the undo label: empty takes the
// operation's own name, "no undo" in any case records nothing, anything else names the step.
// Failures are RuntimeError; picture and undo list are then as before the call.
#pragma once

#include <QByteArray>
#include <QPixmap>
#include <QString>
#include <memory>

#include "engine/color.h"
#include "engine/pixel_array.h"

namespace kvn::engine {

class Engine;
class Image;
class Channels;
class Effects;
class Exif;
class Geometry;
class Iptc;
class Palette;
namespace detail {
class PageList;
// A list and, where the handle stays with one page, that page's identity (0: the current one).
struct PageRef {
    std::shared_ptr<PageList> list;
    quint64 page = 0;
};
} // namespace detail

class Import {
  public:
    explicit Import(detail::PageRef target) : target_(std::move(target)) {}

    // `page` from 1 takes one page of the file, 0 all of them.
    void FromFile(const QString& path, int page, const QString& label);
    void FromBytes(const QByteArray& bytes, int page, const QString& label);
    void FromClipboard(const QString& label);
    // Replaces the current page by a copy of the source's. Costs no pixels until one side changes.
    void FromImgX(const Image& source, int flag, const QString& label);
    void FromPicture(const QPixmap& picture, const QString& label);
    void FromPixels(const PixelArray& pixels, const QString& label);
    // http, https and file. Returns when the download has ended; events run meanwhile.
    void FromURL(const QString& url, const QString& label);
    // Both sides 1 or more. `type` is the row of the image type list.
    void New(int width, int height, const Color& color, int type, const QString& label);

  private:
    detail::PageRef target_;
};

class Export {
  public:
    explicit Export(detail::PageRef source) : source_(std::move(source)) {}

    void AppendToTiff(const QString& path);
    void CopyToClipboard();
    PixelArray GetPixels() const;
    QPixmap Picture() const;
    // `typeCode` as in the file type table; code 0 and an empty path are refused. Formats with
    // pages get all pages of the list, the others the current one.
    void Save(const QString& path, int typeCode, int flag, int pages);

  private:
    detail::PageRef source_;
};

class Info {
  public:
    explicit Info(detail::PageRef page) : page_(std::move(page)) {}

    bool Changed() const;   // since load or save
    int ColorCount() const; // 2, the palette's size, 256 for grey, 16777216
    int ColorDepth() const; // bits a pixel
    void ConvertType(const QString& label, int type);
    // Between JPEG files. The destination keeps its picture; where there is none, one is written
    // with this page's picture, as it would be saved.
    void CopyMetadata(const QString& source, const QString& destination);
    engine::Exif Exif() const;
    engine::Iptc Iptc() const;
    int FileType() const; // 0 if it came from no file
    Color GetPixel(int x, int y) const;
    void SetPixel(int x, int y, const Color& color);
    bool HasAlpha() const;
    int Width() const;
    int Height() const;
    int ListIndex() const; // from 0; -1 if the page is gone
    QString Name() const;
    engine::Palette Palette() const; // declared in engine/palette.h
    int TypeIndex() const;

    const detail::PageRef& ref() const { return page_; }
    // The page itself, to pass on where an image is wanted.
    engine::Image Image() const;

  private:
    detail::PageRef page_;
};

class Images {
  public:
    explicit Images(std::shared_ptr<detail::PageList> list) : list_(std::move(list)) {}

    // `page` from 1 is the place the new page takes; 0 puts it at the end.
    void Add(const engine::Image& image, int page, int flag, const QString& label);
    void Clear(const QString& label);
    int Count() const;
    engine::Image Current() const; // null while the list is empty
    void setCurrent(const engine::Image& page);
    // From 0. Throws subscriptOutOfRange.
    engine::Image Item(int index) const;
    void Remove(const engine::Image& page, const QString& label);

  private:
    std::shared_ptr<detail::PageList> list_;
};

class Utility {
  public:
    Color ColorFromValue(quint32 value, quint8 alpha) const;
    Color MakeColor(quint8 red, quint8 green, quint8 blue, quint8 alpha) const;
    Point MakePoint(int x, int y) const;
    struct Hsl {
        quint8 hue = 0, saturation = 0, luminance = 0;
    };
    Hsl RgbToHsl(quint8 red, quint8 green, quint8 blue) const;
    Color HslToRgb(double hue, double saturation, double luminance) const;
    QString TypeName(int type, bool longForm) const;
    struct FileFacts {
        bool isImage = false;
        int type = 0, images = 0, width = 0, height = 0;
    };
    FileFacts FileInfo(const QString& path) const;
};

class Image {
  public:
    Image() = default; // nothing
    explicit Image(Engine& engine, const QString& traceName = QStringLiteral("Image"));
    explicit Image(detail::PageRef ref) : ref_(std::move(ref)) {}

    bool isNull() const { return !ref_.list; }
    bool operator==(const Image& other) const;

    engine::Import Import() const { return engine::Import(ref_); }
    engine::Export Export() const { return engine::Export(ref_); }
    engine::Info Info() const { return engine::Info(ref_); }
    engine::Images Images() const { return engine::Images(ref_.list); }
    engine::Utility Utility() const { return {}; }
    // Declared in engine/operations.h.
    engine::Effects Effects() const;
    engine::Geometry Geometry() const;
    engine::Channels Channels() const;
    // The form in which one image is passed to an operation of another.
    Image Surface() const { return *this; }

    // Runs one operation of the operation table by its contract name, as the sub-objects do.
    void run(const QString& operation, const QVariantList& arguments, const QString& label);

    bool IsEmpty() const;
    void setInteractive(bool on);
    void setOffscreen(bool on);
    void Undo();
    void setUndoDepth(int depth);

    // For an image that belongs to a window: whose calls these are.
    void setTraceIdentity(int doc, const QString& name);

    const detail::PageRef& ref() const { return ref_; }

  private:
    detail::PageRef ref_;
};

} // namespace kvn::engine
