// Making, changing and removing alpha. Colours stay as they are, unless told otherwise. A picture
// without alpha counts as opaque. Where alpha is added, grey becomes grey with alpha and 24-bit
// 32-bit; palette pictures get a palette with alpha where every colour has one alpha, and become
// 32-bit where alpha comes from a place. `merge type` 0..8 tells how new values meet the present
// ones: see imaging/alpha_merge.h; numbers outside are refused.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Channels.AlphaByColor(colour, tolerance 0..100 %, level 1, level 2, flag, flag, merge type):
// pixels none of whose channels differs from the colour by more than the tolerance in percent of
// 255 get level 1 (0..255), the others level 2. The flags are not looked at.
extern const Operation alphaByColorOperation;

// Channels.AlphaFromImage(mask, size to fit, x, y, merge type): the luma of the mask becomes
// alpha, white being opaque; where the mask itself is transparent it counts as that much darker.
// The mask is laid over the whole picture in its size (bilinear), or with its corner at x, y; alpha
// outside of it stays.
extern const Operation alphaFromImageOperation;

// Channels.AlphaTable(table): each alpha value becomes its entry in the table of 256.
extern const Operation alphaTableOperation;

// Channels.AntialiasAlpha(level 0..100 px): a Gaussian blur of alpha with the level as standard
// deviation, the edge repeated. Pixels that were clear and come into sight take their colour from
// the visible ones around, so that edges show no fringe. 0 changes nothing.
extern const Operation antialiasAlphaOperation;

// Channels.ClearAlpha(): every pixel is opaque again; the type stays.
extern const Operation clearAlphaOperation;

// Channels.ConstantAlpha(alpha 0..255, merge type): one value for all pixels.
extern const Operation constantAlphaOperation;

// Channels.FlattenAlpha(colour): the picture over the colour, rounded to nearest; the result has no
// alpha. The colour's own alpha is not looked at. Grey with alpha becomes grey, or 24-bit if the
// colour is not grey.
extern const Operation flattenAlphaOperation;

} // namespace kvn::imaging
