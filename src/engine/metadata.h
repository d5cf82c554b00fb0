// The EXIF and IPTC tags of one image, read only.
#pragma once

#include <QString>
#include <vector>

#include "engine/image.h"

namespace kvn::engine {

struct MetadataItem {
    QString Name;
    QString Value;
};

class Exif {
  public:
    explicit Exif(detail::PageRef page) : page_(std::move(page)) {}
    // Reads the tags; any value will do. The other members do it by themselves if need be.
    void Load(int which);
    int Count();
    MetadataItem Item(int index);
    // Null if there is none.
    Image Thumbnail() const;
    bool HasThumbnail() const;

  private:
    detail::PageRef page_;
    std::vector<MetadataItem> items_;
    bool loaded_ = false;
};

class Iptc {
  public:
    explicit Iptc(detail::PageRef page) : page_(std::move(page)) {}
    void Load(int which);
    int Count();
    MetadataItem Item(int index);

  private:
    detail::PageRef page_;
    std::vector<MetadataItem> items_;
    bool loaded_ = false;
};

} // namespace kvn::engine
