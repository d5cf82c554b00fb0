// Geometry.Encrypt and Geometry.Decrypt: the pixels become noise under a key, and come back
// exactly with it.
#pragma once

#include "imaging/operation.h"

namespace kvn::imaging {

// Geometry.Encrypt(key), Geometry.Decrypt(key): all bytes of all pixels, alpha included, are
// enciphered as one block (wide_block.h) under keys made from the text (cipher_keys.h). Each undoes
// the other. Type and size stay, nothing is added, so that any file that keeps every bit of a
// pixel keeps the picture. Another key gives other noise and no error; an empty one is refused.
// The key depends on depth and size of the picture but not on how a file stores grey, since some
// formats make a palette of it.
//
// The palette stays readable: it is the indices that become noise. So that each of them names a
// colour, and because many formats fill palettes up, a palette below 256 colours is repeated up to
// there; the way back drops the repetitions. Indices past the end of a palette show black, and the
// palette grows by that black first. The two colours of a 1-bit picture stay where they are.
extern const Operation encryptOperation;
extern const Operation decryptOperation;

} // namespace kvn::imaging
