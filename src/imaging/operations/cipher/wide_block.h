// A picture's bytes enciphered as one block: every bit of the result depends on every bit of the
// picture and of the key, and nothing is added that would need room.
//
// The construction is LIONESS (R. Anderson and E. Biham, Two practical and provably secure block
// ciphers: BEAR and LION, 1996): the block is a short left part and a long right one, and in four
// rounds one changes the other in turn,
//     right ^= stream(hash(key 1, left))       left ^= stream(hash(key 2, right))
//     right ^= stream(hash(key 3, left))       left ^= stream(hash(key 4, right))
// backwards to decipher. Stream is XChaCha20, hash keyed BLAKE2b; the long part is hashed in
// pieces whose digests are hashed again, so that the threads can share the work. Rows have streams
// of their own, by their number as the nonce.
#pragma once

#include "imaging/operations/cipher/cipher_keys.h"
#include "imaging/raster.h"
#include "imaging/task.h"

namespace kvn::imaging {

enum class CipherDirection { Encipher, Decipher };

// Changes the pixels in place. Bits behind the last pixel of a 1-bit row become 0. Pictures below
// 64 bytes hold no block: they get the stream alone, the same in both directions, which hides one
// picture under one key and not several.
void cipherPixels(const View& view, const CipherKeys& keys, CipherDirection direction, Task& task);

} // namespace kvn::imaging
