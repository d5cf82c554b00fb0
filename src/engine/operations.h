// The operations that change pixels, by the objects and names the editor knows. Each member runs
// the operation of that name in the operation table (imaging/operation.h), where its arguments,
// ranges and rules are described, on the page the object belongs to. The last argument is the
// undo label. A null image or colour is "nothing".
#pragma once

#include <QVariant>

#include "engine/image.h"
#include "engine/image_values.h"

namespace kvn::engine {

class OperationSet {
  public:
    explicit OperationSet(detail::PageRef target) : target_(std::move(target)) {}

  protected:
    void run(const char* operation, const QVariantList& arguments, const QString& label);
    static QVariant optionalColor(const Color* value);

  private:
    Image target_;
};

class Effects : public OperationSet {
  public:
    using OperationSet::OperationSet;
    void ApplyFilter(const Table& matrix, double divisor, int bias, const QString& label);
    void ApplyMatrix(const Table& matrix, double divisor, int bias, bool flag1, bool flag2,
                     const QString& label);
    void ArithmeticMean(int size, bool ignoreAlpha, const QString& label);
    void AutoBrightness(quint8 low, quint8 high, bool evenDistribution, const QString& label);
    void Blur(int amount, int kernel, bool flag, const QString& label);
    void BrightnessContrast(int brightness, int contrast, int flag, const QString& label);
    void CannyEdge(int intensity, int low, int high, const QString& label);
    void Colorize(const Color& color, bool flag1, bool flag2, bool flag3, const QString& label);
    void Despeckle(const QString& label);
    void Duotone(const Color& color, const QString& label);
    void EdgeDetection(int amount, const QString& label);
    void Emboss(int angle, int elevation, int offset, bool imageAsTexture, const QString& label);
    void Gamma(double gamma, const QString& label);
    void GaussianBlur(int amount, const QString& label);
    void GeometricMean(int size, bool ignoreAlpha, const QString& label);
    void Halftone(int maxDotSize, bool smoothDots, const QString& label);
    void HarmonicMean(int size, bool ignoreAlpha, const QString& label);
    void HighPass(double radius, const QString& label);
    void Intensify(int amount, const QString& label);
    void Maximum(int size, bool ignoreAlpha, const QString& label);
    void Maximum2(int size, bool ignoreAlpha, const QString& label);
    void MedianCut(int size, bool ignoreAlpha, const QString& label);
    void Minimum(int size, bool ignoreAlpha, const QString& label);
    void Morphology(const Table& kernel, int operation, const QString& label);
    void Mosaic(int width, int height, int channels, const QString& label);
    void Negative(const Color* color, const QString& label);
    void Noise(int type, int variance, bool monochromatic, bool ignoreAlpha, const QString& label);
    void NormalizedDifference(const Image& second, int flag, double scale, double offset,
                              const QString& label);
    void Posterize(const QString& label);
    void RedEyeReduction(int left, int top, int right, int bottom, int saturation, int range,
                         const QString& label);
    void Saturation(double level, const QString& label);
    void Sharpen(int amount, int kernel, bool flag, const QString& label);
    void Soften(int amount, const QString& label);
    void Solarize(int flag, const QString& label);
    void Threshold(int low, int high, bool ignoreAlpha, const QString& label);
    void Tint(int amount, const QString& label);
    void UnsharpMask(int level, double strength, double radius, const QString& label);
    void Vibration(int amount, const QString& label);
    void YpMean(int size, bool removePositive, bool ignoreAlpha, const QString& label);
};

class Geometry : public OperationSet {
  public:
    using OperationSet::OperationSet;
    void ApplyPalette(const QList<Color>& palette, bool dither, const QString& label);
    void AutoCrop(double tolerance, const Color* color, const QString& label);
    void AutoDeskew(int a, int b, int c, int left, int top, int width, int height,
                    const QString& label);
    void BevelEdge(int size, int left, int top, int right, int bottom, double smoothness,
                   const QString& label);
    void Crackle(int depth, int mode, const QString& label);
    void Crop(int left, int top, int width, int height, const QString& label);
    void Decrypt(const QString& key, const QString& label);
    void Dither(int colors, bool flag1, bool flag2, const QString& label);
    void DropShadow(int offsetX, int offsetY, const Color* color, double blur, bool increaseCanvas,
                    const QString& label);
    void EmbossShape(int depth, int angle, int softness, const Color& shadow,
                     const Color& highlight, const QString& label);
    void Encrypt(const QString& key, const QString& label);
    void Flip(int direction, const QString& label);
    void Gauzy(int blur, int sharpen, int clarity, int mode, const QString& label);
    void Gradient(int width, int height, int kind, const Color& start, const Color& end, Point from,
                  Point to, int flag1, double scale, int flag2, const QString& label);
    void HistogramEqualize(int low, int high, int channels, const QString& label);
    void HistogramStretch(int low, int high, int channels, const QString& label);
    void HugoNoise(int width, int height, int octaves, int smoothness, int size,
                   const QString& label);
    void MotionBlur(double distance, int steps, double angle, int style, const QString& label);
    void PerlinNoise(int width, int height, int size, const QString& label);
    void Perspective(Point p1, Point p2, Point p3, Point p4, int flag, const QString& label);
    void PerspectiveMap(Point p1, Point p2, Point p3, Point p4, Point q1, Point q2, Point q3,
                        Point q4, int flag, const QString& label);
    void ReplaceColor(const Color& old, const Color& replacement, double tolerance,
                      bool opacityNonZero, const QString& label);
    void Resize(int width, int height, int method, const QString& label);
    void ResizeCanvas(int width, int height, const Color& color, int offsetX, int offsetY,
                      const QString& label);
    void Rotate(float angle, const Color& color, int flag, const QString& label);
    void Scribble(int darkness, int filter, bool filterFirst, const QString& label);
    void Skew(int direction, int offset, const Color& color, bool fast, const QString& label);
    void Stipple(int size, int filter, bool filterFirst, const QString& label);
    void Warp(int x1, int y1, int x2, int y2, const QString& label);
};

class Transforms : public OperationSet {
  public:
    using OperationSet::OperationSet;
    void BumpMap(double amount, const Image& bump, const QString& label);
    void Custom(const QString& label);
    void Lens(double maxRadius, int offsetX, int offsetY, const QString& label);
    void LineSlice(int style, int offset1, int offset2, const QString& label);
    void Marble(double amount, double sizeX, double sizeY, const QString& label);
    void Offset(int style, int offsetX, int offsetY, const QString& label);
    void Perlin(double amount, double sizeX, double sizeY, const QString& label);
    void Pinch(double maxRadius, double amount, int offsetX, int offsetY, const QString& label);
    void Random(double offset, const QString& label);
    void Ripple(int style, int maxRadius, int amount, double periods, int offsetX, int offsetY,
                const QString& label);
    void Spin(double maxRadius, double maxAngle, int offsetX, int offsetY, const QString& label);
    void SpinWave(double maxRadius, double maxAngle, double wavePeriod, int offsetX, int offsetY,
                  const QString& label);
    void Wave(int style, double maxOffset, double period, const QString& label);
    void Wow(int style, int maxRadius, const QString& label);
    void ZigZag(int style, int maxOffset, double period, const QString& label);
};

class Channels : public OperationSet {
  public:
    using OperationSet::OperationSet;
    void AdjustHSLLiteral(int hue, int saturation, int luminance, const QString& label);
    void AdjustHSLPercent(float hue, float saturation, float luminance, const QString& label);
    void AdjustLiteral(int red, int green, int blue, int alpha, const QString& label);
    void AdjustPercent(float red, float green, float blue, float alpha, const QString& label);
    void AlphaByColor(const Color& color, float tolerance, int level1, int level2, int flag1,
                      int flag2, int mergeType, const QString& label);
    void AlphaFromImage(const Image& source, bool sizeToFit, int x, int y, int mergeType,
                        const QString& label);
    void AlphaTable(const QByteArray& table, const QString& label);
    void AntialiasAlpha(double level, const QString& label);
    void ClearAlpha(const QString& label);
    void ConstantAlpha(quint8 alpha, int mergeType, const QString& label);
    void Desaturate(const QString& label);
    void FlattenAlpha(const Color& color, const QString& label);
    void Shift(quint8 channels, int x, int y, const QString& label);
    void Split(const QString& label);
    void Swizzle(quint8 red, quint8 green, quint8 blue, quint8 alpha, const QString& label);
};

} // namespace kvn::engine
