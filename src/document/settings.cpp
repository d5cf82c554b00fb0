#include "document/settings.h"

#include <variant>

#include "basic/numbers.h"
#include "basic/settings_store.h"
#include "document/program_state.h"

namespace kvn::document {
namespace {

using Member = std::variant<qint16 Settings::*, qint32 Settings::*, bool Settings::*>;

struct Entry {
    const char* name; // as it is stored, spelling included
    Member member;
    const char* defaultText;
};

constexpr Entry entries[] = {
    {"JPG Quaity", &Settings::JpgQuality, "75"},
    {"JPG Smoothing", &Settings::JpgSmoothing, "0"},
    {"JPG Progressive", &Settings::JpgProgressive, "0"},
    {"TIFF Compression", &Settings::TiffCompression, "0"},
    {"BMP RLE Compression", &Settings::BmpRle, "0"},
    {"WMF Placeable", &Settings::WmfPlaceable, "1"},
    {"Alpha Display", &Settings::AlphaDisplayChecker, "1"},
    {"Background Color", &Settings::BackgroundColor, "16777215"},
    {"Flattern Alpha", &Settings::FlattenAlphaOnSave, "1"},
    {"Dither Error", &Settings::DitherError, "20"},
    {"Double Buffer", &Settings::DoubleBuffer, "1"},
};

void convert(const std::string& text, qint16& value) {
    value = toInt16(numberFromText(text));
}
void convert(const std::string& text, qint32& value) {
    value = toInt32(numberFromText(text));
}
void convert(const std::string& text, bool& value) {
    value = booleanFromText(text);
}

std::string textOf(qint32 value) {
    return std::to_string(value);
}
std::string textOf(bool value) {
    return booleanText(value);
}

} // namespace

void LoadSettings(Settings& settings, const CRegister& store) {
    settings = {};
    Settings read;
    for (const Entry& entry : entries) {
        const QString text = store.REGGetSetting(settingsRoot, QString::fromLatin1(settingsPath),
                                                 QString::fromLatin1(entry.name),
                                                 QString::fromLatin1(entry.defaultText));
        std::visit([&](auto member) { convert(text.toStdString(), read.*member); }, entry.member);
    }
    settings = read;
}

void SaveSettings(const Settings& settings, CRegister& store) {
    for (const Entry& entry : entries) {
        const std::string text =
            std::visit([&](auto member) { return textOf(settings.*member); }, entry.member);
        store.REGSaveSetting(settingsRoot, QString::fromLatin1(settingsPath),
                             QString::fromLatin1(entry.name), QString::fromStdString(text));
    }
}

} // namespace kvn::document
