#include "engine/operations.h"

#include "engine/imgx.h"

namespace kvn::engine {

void OperationSet::run(const char* operation, const QVariantList& arguments, const QString& label) {
    target_.run(QString::fromLatin1(operation), arguments, label);
}

QVariant OperationSet::optionalColor(const Color* value) {
    return value ? QVariant::fromValue(*value) : QVariant();
}

Effects Image::Effects() const {
    return engine::Effects(ref_);
}
Geometry Image::Geometry() const {
    return engine::Geometry(ref_);
}
Channels Image::Channels() const {
    return engine::Channels(ref_);
}

Effects ImgX::Effects() const {
    return Image().Effects();
}
Geometry ImgX::Geometry() const {
    return Image().Geometry();
}
Channels ImgX::Channels() const {
    return Image().Channels();
}
Transforms ImgX::Transforms() const {
    return engine::Transforms(Image().ref());
}

// --- Effects

void Effects::ApplyFilter(const Table& matrix, double divisor, int bias, const QString& label) {
    run("Effects.ApplyFilter", {QVariant::fromValue(matrix), divisor, bias}, label);
}

void Effects::ApplyMatrix(const Table& matrix, double divisor, int bias, bool flag1, bool flag2,
                          const QString& label) {
    run("Effects.ApplyMatrix", {QVariant::fromValue(matrix), divisor, bias, flag1, flag2}, label);
}

void Effects::ArithmeticMean(int size, bool ignoreAlpha, const QString& label) {
    run("Effects.ArithmeticMean", {size, ignoreAlpha}, label);
}

void Effects::AutoBrightness(quint8 low, quint8 high, bool evenDistribution, const QString& label) {
    run("Effects.AutoBrightness", {int{low}, int{high}, evenDistribution}, label);
}

void Effects::Blur(int amount, int kernel, bool flag, const QString& label) {
    run("Effects.Blur", {amount, kernel, flag}, label);
}

void Effects::BrightnessContrast(int brightness, int contrast, int flag, const QString& label) {
    run("Effects.BrightnessContrast", {brightness, contrast, flag}, label);
}

void Effects::CannyEdge(int intensity, int low, int high, const QString& label) {
    run("Effects.CannyEdge", {intensity, low, high}, label);
}

void Effects::Colorize(const Color& color, bool flag1, bool flag2, bool flag3,
                       const QString& label) {
    run("Effects.Colorize", {QVariant::fromValue(color), flag1, flag2, flag3}, label);
}

void Effects::Despeckle(const QString& label) {
    run("Effects.Despeckle", {}, label);
}

void Effects::Duotone(const Color& color, const QString& label) {
    run("Effects.Duotone", {QVariant::fromValue(color)}, label);
}

void Effects::EdgeDetection(int amount, const QString& label) {
    run("Effects.EdgeDetection", {amount}, label);
}

void Effects::Emboss(int angle, int elevation, int offset, bool imageAsTexture,
                     const QString& label) {
    run("Effects.Emboss", {angle, elevation, offset, imageAsTexture}, label);
}

void Effects::Gamma(double gamma, const QString& label) {
    run("Effects.Gamma", {gamma}, label);
}

void Effects::GaussianBlur(int amount, const QString& label) {
    run("Effects.GaussianBlur", {amount}, label);
}

void Effects::GeometricMean(int size, bool ignoreAlpha, const QString& label) {
    run("Effects.GeometricMean", {size, ignoreAlpha}, label);
}

void Effects::Halftone(int maxDotSize, bool smoothDots, const QString& label) {
    run("Effects.Halftone", {maxDotSize, smoothDots}, label);
}

void Effects::HarmonicMean(int size, bool ignoreAlpha, const QString& label) {
    run("Effects.HarmonicMean", {size, ignoreAlpha}, label);
}

void Effects::HighPass(double radius, const QString& label) {
    run("Effects.HighPass", {radius}, label);
}

void Effects::Intensify(int amount, const QString& label) {
    run("Effects.Intensify", {amount}, label);
}

void Effects::Maximum(int size, bool ignoreAlpha, const QString& label) {
    run("Effects.Maximum", {size, ignoreAlpha}, label);
}

void Effects::Maximum2(int size, bool ignoreAlpha, const QString& label) {
    run("Effects.Maximum2", {size, ignoreAlpha}, label);
}

void Effects::MedianCut(int size, bool ignoreAlpha, const QString& label) {
    run("Effects.MedianCut", {size, ignoreAlpha}, label);
}

void Effects::Minimum(int size, bool ignoreAlpha, const QString& label) {
    run("Effects.Minimum", {size, ignoreAlpha}, label);
}

void Effects::Morphology(const Table& kernel, int operation, const QString& label) {
    run("Effects.Morphology", {QVariant::fromValue(kernel), operation}, label);
}

void Effects::Mosaic(int width, int height, int channels, const QString& label) {
    run("Effects.Mosaic", {width, height, channels}, label);
}

void Effects::Negative(const Color* color, const QString& label) {
    run("Effects.Negative", {optionalColor(color)}, label);
}

void Effects::Noise(int type, int variance, bool monochromatic, bool ignoreAlpha,
                    const QString& label) {
    run("Effects.Noise", {type, variance, monochromatic, ignoreAlpha}, label);
}

void Effects::NormalizedDifference(const Image& second, int flag, double scale, double offset,
                                   const QString& label) {
    run("Effects.NormalizedDifference", {QVariant::fromValue(second), flag, scale, offset}, label);
}

void Effects::Posterize(const QString& label) {
    run("Effects.Posterize", {}, label);
}

void Effects::RedEyeReduction(int left, int top, int right, int bottom, int saturation, int range,
                              const QString& label) {
    run("Effects.RedEyeReduction", {left, top, right, bottom, saturation, range}, label);
}

void Effects::Saturation(double level, const QString& label) {
    run("Effects.Saturation", {level}, label);
}

void Effects::Sharpen(int amount, int kernel, bool flag, const QString& label) {
    run("Effects.Sharpen", {amount, kernel, flag}, label);
}

void Effects::Soften(int amount, const QString& label) {
    run("Effects.Soften", {amount}, label);
}

void Effects::Solarize(int flag, const QString& label) {
    run("Effects.Solarize", {flag}, label);
}

void Effects::Threshold(int low, int high, bool ignoreAlpha, const QString& label) {
    run("Effects.Threshold", {low, high, ignoreAlpha}, label);
}

void Effects::Tint(int amount, const QString& label) {
    run("Effects.Tint", {amount}, label);
}

void Effects::UnsharpMask(int level, double strength, double radius, const QString& label) {
    run("Effects.UnsharpMask", {level, strength, radius}, label);
}

void Effects::Vibration(int amount, const QString& label) {
    run("Effects.Vibration", {amount}, label);
}

void Effects::YpMean(int size, bool removePositive, bool ignoreAlpha, const QString& label) {
    run("Effects.YpMean", {size, removePositive, ignoreAlpha}, label);
}

} // namespace kvn::engine
