// Up to 256 colours: a palette made by itself, to be applied to pictures, or the one of a palette
// picture. Copies refer to the same palette.
#pragma once

#include <QList>
#include <memory>

#include "engine/color.h"
#include "engine/image.h"

namespace kvn::engine {

class Palette {
  public:
    // Empty.
    explicit Palette(Engine& engine, const QString& traceName = QStringLiteral("Palette"));
    // The colours of the picture. Writing changes the picture at once and takes no undo step;
    // throws RuntimeError for a picture without a palette.
    explicit Palette(detail::PageRef page);

    // Sets one colour. A palette that is shorter grows up to it, with black.
    void Entry(quint8 index, const Color& color);
    // 1 system (256 colours), 2 web (216), 3 the sixteen colours, 4 black and white.
    void LoadPreset(int preset);

    int Count() const;
    // In order; empty for a picture without a palette. As Geometry.ApplyPalette takes them.
    QList<Color> Colors() const;
    operator QList<Color>() const { return Colors(); }

  private:
    struct Own;
    std::shared_ptr<Own> own_; // null for the palette of a picture
    detail::PageRef page_;
};

} // namespace kvn::engine
