// The codecs by name. The table in codec.cpp is the one place that lists them for the others.
#pragma once

#include "imaging/codecs/codec.h"

namespace kvn::imaging {

const Codec& jpegCodec();
const Codec& pngCodec();
const Codec& tiffCodec();
const Codec& gifCodec();
const Codec& bmpCodec();
const Codec& psdCodec();
const Codec& pcxCodec();
const Codec& icoCodec();
const Codec& wbmpCodec();
const Codec& tgaCodec();
const Codec& wmfCodec();
const Codec& emfCodec();

} // namespace kvn::imaging
