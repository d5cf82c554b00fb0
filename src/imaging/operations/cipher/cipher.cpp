#include "imaging/operations/cipher/cipher.h"

#include <algorithm>

#include "imaging/operations/cipher/wide_block.h"
#include "imaging/operations/families.h"

namespace kvn::imaging {
namespace {

constexpr Argument cipherArguments[] = {
    {"key", ArgumentKind::Text, 0, 0, "", "any text but an empty one"},
};

// One more than the greatest index in use.
std::size_t indicesUsed(const ConstView& view) {
    std::uint8_t most = 0;
    for (int y = 0; y < view.height; ++y)
        most = std::max(most, *std::max_element(view.row(y), view.row(y) + view.width));
    return most + std::size_t{1};
}

bool hasIndices(const Raster& raster) {
    return hasPalette(raster.type()) && raster.type() != ImageType::Bit1;
}

void repeatColors(Palette& palette, std::size_t used) {
    if (palette.isEmpty()) return; // every index is black, and stays so
    if (palette.size() < used) palette.set(used - 1, Rgba{});
    const std::size_t count = palette.size();
    for (std::size_t i = count; i < Palette::maxSize; ++i)
        palette.set(i, palette[i - count]);
}

// The shortest begin that gives the palette when it is repeated and that has all indices in use.
void dropRepetitions(Palette& palette, std::size_t used) {
    const auto& colors = palette.colors();
    for (std::size_t count = used; count < colors.size(); ++count)
        if (std::equal(colors.begin() + static_cast<std::ptrdiff_t>(count), colors.end(),
                       colors.begin())) {
            palette =
                Palette({colors.begin(), colors.begin() + static_cast<std::ptrdiff_t>(count)});
            return;
        }
}

Raster ciphered(CipherDirection direction, const Raster& source, const Arguments& arguments,
                Task& task) {
    const CipherKeys keys(arguments.text(0), bitsPerPixel(source.type()), source.width(),
                          source.height());
    Raster result = source;
    if (hasIndices(source)) repeatColors(result.paletteForEdit(), indicesUsed(source.view()));
    cipherPixels(result.edit(), keys, direction, task);
    if (hasIndices(source)) dropRepetitions(result.paletteForEdit(), indicesUsed(result.view()));
    return result;
}

Raster encrypt(const Raster& source, const Arguments& arguments, Task& task) {
    return ciphered(CipherDirection::Encipher, source, arguments, task);
}

Raster decrypt(const Raster& source, const Arguments& arguments, Task& task) {
    return ciphered(CipherDirection::Decipher, source, arguments, task);
}

} // namespace

const Operation encryptOperation = {
    .name = "Geometry.Encrypt",
    .undoName = "Encrypt",
    .arguments = cipherArguments,
    .run = encrypt,
    .border = -1,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Keeps,
    .note = "Makes the pixels noise from which only the key brings them back.",
};

const Operation decryptOperation = {
    .name = "Geometry.Decrypt",
    .undoName = "Decrypt",
    .arguments = cipherArguments,
    .run = decrypt,
    .border = -1,
    .alpha = AlphaRule::EveryChannel,
    .types = TypeRule::Keeps,
    .note = "Brings back a picture that was enciphered with the same key.",
};

std::span<const Operation* const> cipherOperations() {
    static constexpr const Operation* list[] = {&decryptOperation, &encryptOperation};
    return list;
}

} // namespace kvn::imaging
