// The formats of the filters once more, in the slowest and plainest way: what a filter writes and reads is held against
// it.

#ifndef FilterReference_h
#define FilterReference_h

#include <array>
#include <cstdint>
#include <string>

namespace qvTest {

// Where the counters of a compressor stand at its first byte.
struct ReferenceCounters {
    std::int64_t input = 0;
    std::int64_t output = 0;
};

std::string referenceCompress(std::string const & data, ReferenceCounters counters = {});

enum class ReferenceEnd { endCode, cut, refused };

struct ReferenceData {
    std::string data;
    ReferenceEnd end = ReferenceEnd::endCode;
    std::size_t used = 0; // bytes of the stream
};

ReferenceData referenceDecompress(std::string const & stream);

std::string referenceFrame(std::string const & data, std::uint16_t & sum);

using ReferenceTable = std::array<unsigned, 44>;

ReferenceTable referenceExpansion(std::uint32_t first, std::uint32_t step, std::array<std::uint32_t, 8> key,
                                  int lastIndex, bool published);
void referenceEncipher(unsigned char * block, ReferenceTable const & table);
std::string referenceEncrypt(std::string const & data, ReferenceTable const & table, bool swapped);

} // namespace qvTest

#endif
