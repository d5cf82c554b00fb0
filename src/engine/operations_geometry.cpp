#include "engine/operations.h"

namespace kvn::engine {

// --- Geometry

void Geometry::ApplyPalette(const QList<Color>& palette, bool dither, const QString& label) {
    run("Geometry.ApplyPalette", {QVariant::fromValue(palette), dither}, label);
}

void Geometry::AutoCrop(double tolerance, const Color* color, const QString& label) {
    run("Geometry.AutoCrop", {tolerance, optionalColor(color)}, label);
}

void Geometry::AutoDeskew(int a, int b, int c, int left, int top, int width, int height,
                          const QString& label) {
    run("Geometry.AutoDeskew", {a, b, c, left, top, width, height}, label);
}

void Geometry::BevelEdge(int size, int left, int top, int right, int bottom, double smoothness,
                         const QString& label) {
    run("Geometry.BevelEdge", {size, left, top, right, bottom, smoothness}, label);
}

void Geometry::Crackle(int depth, int mode, const QString& label) {
    run("Geometry.Crackle", {depth, mode}, label);
}

void Geometry::Crop(int left, int top, int width, int height, const QString& label) {
    run("Geometry.Crop", {left, top, width, height}, label);
}

void Geometry::Decrypt(const QString& key, const QString& label) {
    run("Geometry.Decrypt", {key}, label);
}

void Geometry::Dither(int colors, bool flag1, bool flag2, const QString& label) {
    run("Geometry.Dither", {colors, flag1, flag2}, label);
}

void Geometry::DropShadow(int offsetX, int offsetY, const Color* color, double blur,
                          bool increaseCanvas, const QString& label) {
    run("Geometry.DropShadow", {offsetX, offsetY, optionalColor(color), blur, increaseCanvas},
        label);
}

void Geometry::EmbossShape(int depth, int angle, int softness, const Color& shadow,
                           const Color& highlight, const QString& label) {
    run("Geometry.EmbossShape",
        {depth, angle, softness, QVariant::fromValue(shadow), QVariant::fromValue(highlight)},
        label);
}

void Geometry::Encrypt(const QString& key, const QString& label) {
    run("Geometry.Encrypt", {key}, label);
}

void Geometry::Flip(int direction, const QString& label) {
    run("Geometry.Flip", {direction}, label);
}

void Geometry::Gauzy(int blur, int sharpen, int clarity, int mode, const QString& label) {
    run("Geometry.Gauzy", {blur, sharpen, clarity, mode}, label);
}

void Geometry::Gradient(int width, int height, int kind, const Color& start, const Color& end,
                        Point from, Point to, int flag1, double scale, int flag2,
                        const QString& label) {
    run("Geometry.Gradient",
        {width, height, kind, QVariant::fromValue(start), QVariant::fromValue(end),
         QVariant::fromValue(from), QVariant::fromValue(to), flag1, scale, flag2},
        label);
}

void Geometry::HistogramEqualize(int low, int high, int channels, const QString& label) {
    run("Geometry.HistogramEqualize", {low, high, channels}, label);
}

void Geometry::HistogramStretch(int low, int high, int channels, const QString& label) {
    run("Geometry.HistogramStretch", {low, high, channels}, label);
}

void Geometry::HugoNoise(int width, int height, int octaves, int smoothness, int size,
                         const QString& label) {
    run("Geometry.HugoNoise", {width, height, octaves, smoothness, size}, label);
}

void Geometry::MotionBlur(double distance, int steps, double angle, int style,
                          const QString& label) {
    run("Geometry.MotionBlur", {distance, steps, angle, style}, label);
}

void Geometry::PerlinNoise(int width, int height, int size, const QString& label) {
    run("Geometry.PerlinNoise", {width, height, size}, label);
}

void Geometry::Perspective(Point p1, Point p2, Point p3, Point p4, int flag, const QString& label) {
    run("Geometry.Perspective",
        {QVariant::fromValue(p1), QVariant::fromValue(p2), QVariant::fromValue(p3),
         QVariant::fromValue(p4), flag},
        label);
}

void Geometry::PerspectiveMap(Point p1, Point p2, Point p3, Point p4, Point q1, Point q2, Point q3,
                              Point q4, int flag, const QString& label) {
    run("Geometry.PerspectiveMap",
        {QVariant::fromValue(p1), QVariant::fromValue(p2), QVariant::fromValue(p3),
         QVariant::fromValue(p4), QVariant::fromValue(q1), QVariant::fromValue(q2),
         QVariant::fromValue(q3), QVariant::fromValue(q4), flag},
        label);
}

void Geometry::ReplaceColor(const Color& old, const Color& replacement, double tolerance,
                            bool opacityNonZero, const QString& label) {
    run("Geometry.ReplaceColor",
        {QVariant::fromValue(old), QVariant::fromValue(replacement), tolerance, opacityNonZero},
        label);
}

void Geometry::Resize(int width, int height, int method, const QString& label) {
    run("Geometry.Resize", {width, height, method}, label);
}

void Geometry::ResizeCanvas(int width, int height, const Color& color, int offsetX, int offsetY,
                            const QString& label) {
    run("Geometry.ResizeCanvas", {width, height, QVariant::fromValue(color), offsetX, offsetY},
        label);
}

void Geometry::Rotate(float angle, const Color& color, int flag, const QString& label) {
    run("Geometry.Rotate", {double{angle}, QVariant::fromValue(color), flag}, label);
}

void Geometry::Scribble(int darkness, int filter, bool filterFirst, const QString& label) {
    run("Geometry.Scribble", {darkness, filter, filterFirst}, label);
}

void Geometry::Skew(int direction, int offset, const Color& color, bool fast,
                    const QString& label) {
    run("Geometry.Skew", {direction, offset, QVariant::fromValue(color), fast}, label);
}

void Geometry::Stipple(int size, int filter, bool filterFirst, const QString& label) {
    run("Geometry.Stipple", {size, filter, filterFirst}, label);
}

void Geometry::Warp(int x1, int y1, int x2, int y2, const QString& label) {
    run("Geometry.Warp", {x1, y1, x2, y2}, label);
}

// --- Transforms

void Transforms::BumpMap(double amount, const Image& bump, const QString& label) {
    run("Transforms.BumpMap", {amount, QVariant::fromValue(bump)}, label);
}

void Transforms::Custom(const QString& label) {
    run("Transforms.Custom", {}, label);
}

void Transforms::Lens(double maxRadius, int offsetX, int offsetY, const QString& label) {
    run("Transforms.Lens", {maxRadius, offsetX, offsetY}, label);
}

void Transforms::LineSlice(int style, int offset1, int offset2, const QString& label) {
    run("Transforms.LineSlice", {style, offset1, offset2}, label);
}

void Transforms::Marble(double amount, double sizeX, double sizeY, const QString& label) {
    run("Transforms.Marble", {amount, sizeX, sizeY}, label);
}

void Transforms::Offset(int style, int offsetX, int offsetY, const QString& label) {
    run("Transforms.Offset", {style, offsetX, offsetY}, label);
}

void Transforms::Perlin(double amount, double sizeX, double sizeY, const QString& label) {
    run("Transforms.Perlin", {amount, sizeX, sizeY}, label);
}

void Transforms::Pinch(double maxRadius, double amount, int offsetX, int offsetY,
                       const QString& label) {
    run("Transforms.Pinch", {maxRadius, amount, offsetX, offsetY}, label);
}

void Transforms::Random(double offset, const QString& label) {
    run("Transforms.Random", {offset}, label);
}

void Transforms::Ripple(int style, int maxRadius, int amount, double periods, int offsetX,
                        int offsetY, const QString& label) {
    run("Transforms.Ripple", {style, maxRadius, amount, periods, offsetX, offsetY}, label);
}

void Transforms::Spin(double maxRadius, double maxAngle, int offsetX, int offsetY,
                      const QString& label) {
    run("Transforms.Spin", {maxRadius, maxAngle, offsetX, offsetY}, label);
}

void Transforms::SpinWave(double maxRadius, double maxAngle, double wavePeriod, int offsetX,
                          int offsetY, const QString& label) {
    run("Transforms.SpinWave", {maxRadius, maxAngle, wavePeriod, offsetX, offsetY}, label);
}

void Transforms::Wave(int style, double maxOffset, double period, const QString& label) {
    run("Transforms.Wave", {style, maxOffset, period}, label);
}

void Transforms::Wow(int style, int maxRadius, const QString& label) {
    run("Transforms.Wow", {style, maxRadius}, label);
}

void Transforms::ZigZag(int style, int maxOffset, double period, const QString& label) {
    run("Transforms.ZigZag", {style, maxOffset, period}, label);
}

// --- Channels

void Channels::AdjustHSLLiteral(int hue, int saturation, int luminance, const QString& label) {
    run("Channels.AdjustHSLLiteral", {hue, saturation, luminance}, label);
}

void Channels::AdjustHSLPercent(float hue, float saturation, float luminance,
                                const QString& label) {
    run("Channels.AdjustHSLPercent", {double{hue}, double{saturation}, double{luminance}}, label);
}

void Channels::AdjustLiteral(int red, int green, int blue, int alpha, const QString& label) {
    run("Channels.AdjustLiteral", {red, green, blue, alpha}, label);
}

void Channels::AdjustPercent(float red, float green, float blue, float alpha,
                             const QString& label) {
    run("Channels.AdjustPercent", {double{red}, double{green}, double{blue}, double{alpha}}, label);
}

void Channels::AlphaByColor(const Color& color, float tolerance, int level1, int level2, int flag1,
                            int flag2, int mergeType, const QString& label) {
    run("Channels.AlphaByColor",
        {QVariant::fromValue(color), double{tolerance}, level1, level2, flag1, flag2, mergeType},
        label);
}

void Channels::AlphaFromImage(const Image& source, bool sizeToFit, int x, int y, int mergeType,
                              const QString& label) {
    run("Channels.AlphaFromImage", {QVariant::fromValue(source), sizeToFit, x, y, mergeType},
        label);
}

void Channels::AlphaTable(const QByteArray& table, const QString& label) {
    run("Channels.AlphaTable", {table}, label);
}

void Channels::AntialiasAlpha(double level, const QString& label) {
    run("Channels.AntialiasAlpha", {level}, label);
}

void Channels::ClearAlpha(const QString& label) {
    run("Channels.ClearAlpha", {}, label);
}

void Channels::ConstantAlpha(quint8 alpha, int mergeType, const QString& label) {
    run("Channels.ConstantAlpha", {int{alpha}, mergeType}, label);
}

void Channels::Desaturate(const QString& label) {
    run("Channels.Desaturate", {}, label);
}

void Channels::FlattenAlpha(const Color& color, const QString& label) {
    run("Channels.FlattenAlpha", {QVariant::fromValue(color)}, label);
}

void Channels::Shift(quint8 channels, int x, int y, const QString& label) {
    run("Channels.Shift", {int{channels}, x, y}, label);
}

void Channels::Split(const QString& label) {
    run("Channels.Split", {}, label);
}

void Channels::Swizzle(quint8 red, quint8 green, quint8 blue, quint8 alpha, const QString& label) {
    run("Channels.Swizzle", {int{red}, int{green}, int{blue}, int{alpha}}, label);
}

} // namespace kvn::engine
