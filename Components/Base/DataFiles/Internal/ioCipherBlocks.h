// The block cipher over many blocks, and its key in memory that nobody shares.

#ifndef ioCipherBlocks_h
#define ioCipherBlocks_h

#include <cstddef>

namespace ioCipher {

inline constexpr std::size_t blockBytes = 16;
inline constexpr int tableWords = 44;

// What fdblarccos2_ does, into a table of the caller's.
void expandKey(void const * key, int length, unsigned * table);

// In place. Blocks do not depend on one another, so several are worked on at a time.
void encipher(char * bytes, std::size_t numBlocks, unsigned const * table);
void decipher(char * bytes, std::size_t numBlocks, unsigned const * table);

} // namespace ioCipher

#endif
