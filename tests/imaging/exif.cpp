// EXIF blocks edited in place, tag listings, metadata copied between files.
#include <QtTest>

#include "imaging/codec_pages.h"
#include "imaging/codecs/all.h"
#include "imaging/codecs/jpeg_segments.h"
#include "imaging/exif.h"
#include "imaging/metadata/copy.h"
#include "imaging/metadata/exif_block.h"
#include "imaging/metadata/for_writing.h"
#include "imaging/support/exif_maker.h"

using namespace kvn;
using namespace kvn::test;
using enum ExifBlock::Directory;

namespace {

using File = std::vector<std::uint8_t>;

// Dark on the left, light on the right, so that turning it shows.
Raster picture(int width, int height) {
    Raster raster(ImageType::Rgb24, width, height);
    const View view = raster.edit();
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            std::fill_n(view.row(y) + 3 * x, 3, static_cast<std::uint8_t>(x * 255 / width));
    return raster;
}

Bytes jpegOf(const Raster& raster, const Metadata& metadata = {}) {
    return written(jpegCodec(), {{raster, std::make_shared<Metadata>(metadata), {}}});
}

Raster thumbnailOf(const Metadata& metadata) {
    return reread(jpegCodec(), exifThumbnail(metadata)).pages.front().raster;
}

std::string valueOf(const std::vector<MetadataTag>& tags, std::string_view name) {
    for (const MetadataTag& tag : tags)
        if (tag.name == name) return tag.value;
    return "none";
}

} // namespace

class ExifTest : public QObject {
    Q_OBJECT

  private slots:
    void editsTouchNothingElse() {
        for (const bool big : {false, true}) {
            const auto make = [&](int orientation, int type, std::uint32_t width) {
                return ExifMaker(big).make({{0x0112, 3, static_cast<std::uint32_t>(orientation)}},
                                           {{0xa002, type, width}, {0xa003, 3, 44}}, {1, 2, 3, 4});
            };
            ExifBlock block(make(6, 3, 50));
            QCOMPARE(block.number(Main, ExifBlock::orientation).value(), 6u);
            QVERIFY(block.setNumber(Main, ExifBlock::orientation, 1));
            QVERIFY(block.setNumber(Camera, ExifBlock::pixelXDimension, 60));
            QCOMPARE(block.bytes(), make(1, 3, 60));
            // A number too large for sixteen bits makes the tag a wider one.
            QVERIFY(block.setNumber(Camera, ExifBlock::pixelXDimension, 70000));
            QCOMPARE(block.bytes(), make(1, 4, 70000));
            QVERIFY(!block.setNumber(Main, ExifBlock::imageWidth, 5));
            QCOMPARE(block.bytes(), make(1, 4, 70000));
        }
    }

    void tagsAreAdded() {
        Metadata meta;
        meta.exif = ExifMaker(true).make({}, {{0xa003, 3, 44}}, {});
        ExifBlock block(meta.exif);
        QVERIFY(block.putMainNumber(ExifBlock::orientation, 8));
        QCOMPARE(block.number(Main, ExifBlock::orientation).value(), 8u);
        QCOMPARE(block.number(Camera, ExifBlock::pixelYDimension).value(), 44u);
        meta.exif = block.bytes();
        QCOMPARE(valueOf(exifTags(meta), "Make"), std::string("Makers & Sons"));
        QVERIFY(!ExifBlock({}).putMainNumber(ExifBlock::orientation, 1));
    }

    void brokenBlocksHaveNoTags() {
        const Bytes whole =
            ExifMaker(false).make({{0x0112, 3, 6}}, {{0xa002, 4, 5}}, Bytes(50, 0xff));
        const auto visit = [](const Bytes& bytes) {
            ExifBlock block(bytes);
            block.number(Main, ExifBlock::orientation);
            block.fraction(Main, ExifBlock::xResolution);
            block.setNumber(Camera, ExifBlock::pixelXDimension, 1);
            block.setThumbnail(Bytes{0xff, 0xd8});
            block.putMainNumber(ExifBlock::imageWidth, 3);
            block.removeThumbnail();
            Metadata meta;
            meta.exif = bytes;
            exifTags(meta);
            exifThumbnail(meta);
        };
        for (std::size_t size = 0; size < whole.size(); ++size)
            visit({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        for (std::size_t at = 0; at < whole.size(); ++at)
            for (const int value : {0, 1, 8, 0x7f, 0xff}) {
                Bytes changed = whole;
                changed[at] = static_cast<std::uint8_t>(value);
                visit(changed);
            }
        QVERIFY(!ExifBlock(bytesOf("II*\0")).number(Main, ExifBlock::orientation));
    }

    void tagsAreListed() {
        Metadata meta;
        meta.exif = ExifMaker(true).make({{0x0112, 3, 6}}, {{0x8827, 3, 400}}, {});
        const auto tags = exifTags(meta);
        QCOMPARE(valueOf(tags, "Make"), std::string("Makers & Sons"));
        QCOMPARE(valueOf(tags, "Orientation"), std::string("right, top"));
        QCOMPARE(valueOf(tags, "ISOSpeedRatings"), std::string("400"));
        for (const Bytes& record : {iptcRecord(5, "Title"), iptcRecord(25, "one"),
                                    iptcRecord(25, "t\xc3\xbc"), iptcRecord(120, "caf\xe9\nbar")})
            meta.iptc.insert(meta.iptc.end(), record.begin(), record.end());
        const auto iptc = iptcTags(meta);
        QCOMPARE(iptc.size(), std::size_t{4});
        QCOMPARE(valueOf(iptc, "ObjectName"), std::string("Title"));
        QCOMPARE(iptc[2].value, std::string("t\xc3\xbc"));
        QCOMPARE(valueOf(iptc, "Caption"), std::string("caf\xc3\xa9 bar"));
        QVERIFY(exifTags({}).empty() && iptcTags({}).empty() && exifThumbnail({}).empty());
    }

    void xmpFollowsThePicture() {
        Metadata meta;
        meta.xmp = bytesOf("<a tiff:Orientation=\"8\" exif:PixelXDimension='4000'/>"
                           "<exif:PixelYDimension>3000</exif:PixelYDimension><tiff:OrientationX/>");
        const Metadata made = metadataForWriting(meta, Raster(ImageType::Gray8, 12, 7), true);
        QCOMPARE(made.xmp,
                 bytesOf("<a tiff:Orientation=\"1\" exif:PixelXDimension='12'/>"
                         "<exif:PixelYDimension>7</exif:PixelYDimension><tiff:OrientationX/>"));
    }

    void profilesOfAnotherKindAreDropped() {
        Metadata meta;
        meta.icc = Bytes(200, 0);
        std::copy_n("GRAY", 4, meta.icc.begin() + 16);
        const Raster raster(ImageType::Gray8, 2, 2);
        QCOMPARE(metadataForWriting(meta, raster, true).icc, meta.icc);
        QVERIFY(metadataForWriting(meta, raster, false).icc.empty());
    }

    void thumbnailsShowThePicture() {
        const Raster whole = picture(800, 600);
        const Bytes thumbnail = jpegOf(picture(160, 120));
        const auto with = [&](int orientation) {
            Metadata meta;
            meta.exif = ExifMaker(false).make(
                {{0x0112, 3, static_cast<std::uint32_t>(orientation)}}, {}, thumbnail);
            return meta;
        };
        // As it was, and with a pixel changed: byte for byte.
        Raster touched = whole;
        touched.setPixel(3, 3, {255, 0, 0});
        QCOMPARE(exifThumbnail(metadataForWriting(with(1), touched, false)), thumbnail);

        // Turned: drawn anew, upright.
        Task task;
        Raster turned(ImageType::Rgb24, 600, 800);
        const View view = turned.edit();
        for (int y = 0; y < 800; ++y)
            for (int x = 0; x < 1800; ++x)
                view.row(y)[x] = static_cast<std::uint8_t>(y * 255 / 800);
        const Metadata made = metadataForWriting(with(6), turned, false);
        const Raster small = thumbnailOf(made);
        QCOMPARE(small.size(), (Size{120, 160}));
        QVERIFY(small.pixel(60, 10).r < 60 && small.pixel(60, 150).r > 190);

        // Painted over: what is hidden in the picture is not to be seen in the thumbnail.
        Raster painted = whole;
        for (int y = 0; y < 150; ++y)
            for (int x = 600; x < 800; ++x)
                painted.setPixel(x, y, {0, 0, 0});
        QVERIFY(thumbnailOf(metadataForWriting(with(1), painted, false)).pixel(140, 10).r < 40);

        // No room for a new one: none.
        Metadata tight;
        tight.exif = ExifMaker(true).make({{0x0112, 3, 3}}, {}, {0xff, 0xd8, 0xff, 0xd9});
        QVERIFY(exifThumbnail(metadataForWriting(tight, whole, false)).empty());
    }

    void metadataIsCopiedBetweenFiles() {
        Metadata from;
        from.exif = ExifMaker(true).make({{0x0112, 3, 6}}, {{0xa002, 4, 999}}, {});
        from.xmp = bytesOf("<x/>");
        from.iptc = iptcRecord(5, "from");
        from.comment = "from";
        Metadata to;
        to.exif = ExifMaker(false).make({{0x0112, 3, 1}, {0x0128, 3, 2}}, {}, {});
        to.comment = "to";
        to.icc = Bytes(200, 0);
        std::copy_n("RGB ", 4, to.icc.begin() + 16);
        const Bytes source = jpegOf(picture(20, 10), from);
        const Bytes destination = jpegOf(picture(64, 48), to);

        const Bytes result = jpegWithMetadataOf(source, destination);
        const Picture read = reread(jpegCodec(), result);
        const Metadata& meta = *read.pages.front().metadata;
        QCOMPARE(meta.xmp, from.xmp);
        QCOMPARE(meta.iptc, from.iptc);
        QCOMPARE(meta.comment, from.comment);
        QCOMPARE(meta.icc, to.icc);
        QVERIFY(read.pages.front().raster.samePixels(
            reread(jpegCodec(), destination).pages.front().raster));
        QCOMPARE(ExifBlock(meta.exif).number(Camera, ExifBlock::pixelXDimension).value(), 64u);
        QCOMPARE(valueOf(exifTags(meta), "Make"), std::string("Makers & Sons"));
        // The coded pixels are the same bytes.
        const auto coded = [](const Bytes& file) {
            return Bytes(file.begin() + static_cast<std::ptrdiff_t>(outlineJpeg(file).scan),
                         file.end());
        };
        QCOMPARE(coded(result), coded(destination));
        // A second time changes nothing more.
        QCOMPARE(jpegWithMetadataOf(source, result), result);
    }

    void copyingKeepsThePictureUpright() {
        // The destination lies on its side and says so; the source says nothing of it.
        Metadata plain;
        plain.exif = ExifMaker(true).make({}, {}, {});
        const Bytes source = jpegOf(picture(20, 10), plain);
        Bytes destination = jpegOf(picture(64, 48));
        Bytes segment{0xff, 0xe1, 0, 0};
        const Bytes exif = ExifMaker(false).make({{0x0112, 3, 8}}, {}, {});
        for (const Bytes& part : {bytesOf(std::string_view("Exif\0\0", 6)), exif})
            segment.insert(segment.end(), part.begin(), part.end());
        segment[3] = static_cast<std::uint8_t>(segment.size() - 2);
        destination.insert(destination.begin() + 2, segment.begin(), segment.end());
        QVERIFY(reread(jpegCodec(), jpegWithMetadataOf(source, destination))
                    .pages.front()
                    .raster.samePixels(reread(jpegCodec(), destination).pages.front().raster));
    }

    void copiesSpeakOfTheirPicture() {
        // The source has nothing to tell; the destination lies on its side and goes on saying so.
        Bytes turned = jpegOf(picture(64, 48));
        Bytes segment = bytesOf(std::string_view("\xff\xe1\0\0Exif\0\0", 10));
        for (const std::uint8_t byte : ExifMaker(false).make({{0x0112, 3, 8}}, {}, {}))
            segment.push_back(byte);
        segment[3] = static_cast<std::uint8_t>(segment.size() - 2);
        turned.insert(turned.begin() + 2, segment.begin(), segment.end());
        const Bytes bare = jpegOf(picture(9, 9));
        const Page page = reread(jpegCodec(), jpegWithMetadataOf(bare, turned)).pages.front();
        QCOMPARE(page.raster.size(), (Size{48, 64}));
        QCOMPARE(valueOf(exifTags(*page.metadata), "Make"), std::string("none"));

        // The source's thumbnail shows another picture.
        Metadata meta;
        meta.exif = ExifMaker(true).make({{0x0112, 3, 1}}, {}, jpegOf(picture(160, 120)));
        Raster white(ImageType::Rgb24, 320, 240);
        std::fill_n(white.edit().row(0), white.rowBytes() * 240, std::uint8_t{250});
        QTemporaryDir folder;
        const std::string path = (folder.path() + "/new.jpg").toStdString();
        const std::string source = (folder.path() + "/source.jpg").toStdString();
        const Bytes file = jpegOf(picture(320, 240), meta);
        replaceFile(source, [&](ByteSink& sink) { sink.write(file.data(), file.size()); });
        Task task;
        Metadata own;
        own.comment = "of the page";
        copyMetadata(source, {white, std::make_shared<Metadata>(own), {}}, {}, path, task);
        const FileBytes made(path);
        const Page copy = jpegCodec().read(made.bytes(), {}, task).pages.front();
        QVERIFY(copy.metadata->comment.empty());
        QVERIFY(thumbnailOf(*copy.metadata).pixel(5, 60).r > 240);
    }

    void failedCopiesChangeNothing() {
        QTemporaryDir folder;
        const auto put = [&](const char* name, const Bytes& bytes) {
            const std::string path = (folder.path() + "/" + name).toStdString();
            replaceFile(path, [&](ByteSink& sink) { sink.write(bytes.data(), bytes.size()); });
            return path;
        };
        const Bytes jpeg = jpegOf(picture(8, 8));
        const std::string good = put("good.jpg", jpeg), bad = put("bad.jpg", bytesOf("no picture"));
        QVERIFY_EXCEPTION_THROWN(copyMetadata(bad, good), RuntimeError);
        QVERIFY_EXCEPTION_THROWN(copyMetadata(good, bad), RuntimeError);
        QVERIFY_EXCEPTION_THROWN(copyMetadata(good, good + "none"), RuntimeError);
        const FileBytes file(good);
        QCOMPARE(Bytes(file.bytes().begin(), file.bytes().end()), jpeg);
        copyMetadata(good, good);
    }
};

QTEST_GUILESS_MAIN(ExifTest)
#include "exif.moc"
