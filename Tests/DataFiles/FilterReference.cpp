#include "DataFiles/FilterReference.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace qvTest {

namespace {

constexpr int slots = 69001;

unsigned char byteAt(std::string const & text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

class Compressor {
public:
    explicit Compressor(ReferenceCounters counters)
        : in_(counters.input), out_(counters.output), checkpoint_(counters.input + 10000), keys_(slots, -1),
          codes_(slots) {}

    std::string run(std::string const & data) {
        stream_ = "\x1F\x9D\x90";
        int current = 0;
        for (std::size_t at = 0; at < data.size(); ++at) {
            ++in_;
            current = at == 0 ? byteAt(data, 0) : step(current, byteAt(data, at));
        }
        if (!data.empty()) {
            put(current);
        }
        put(257);
        writeGroup();
        return stream_;
    }

private:
    int step(int current, int c) {
        int const key = c * 65536 + current;
        int slot = (c << 8) ^ current;
        int const stride = slot == 0 ? 1 : slots - slot;
        for (bool first = true;; first = false) {
            int const held = keys_[static_cast<std::size_t>(slot)];
            if (held == key) {
                return codes_[static_cast<std::size_t>(slot)];
            }
            if (first ? held < 0 : held <= 0) {
                break;
            }
            slot -= stride;
            if (slot < 0) {
                slot += slots;
            }
        }
        put(current);
        if (next_ < 65536) {
            codes_[static_cast<std::size_t>(slot)] = next_++;
            keys_[static_cast<std::size_t>(slot)] = key;
        } else if (in_ >= checkpoint_) {
            testRatio();
        }
        return c;
    }

    void testRatio() {
        checkpoint_ = in_ + 10000;
        std::int64_t const divisor = out_ / 256;
        std::int64_t const ratio = in_ < 0x800000 ? in_ * 256 / out_ : divisor == 0 ? 0x7FFFFFFF : in_ / divisor;
        if (ratio > ratio_) {
            ratio_ = ratio;
            return;
        }
        ratio_ = 0;
        std::fill(keys_.begin(), keys_.end(), -1);
        next_ = 258;
        clear_ = true;
        put(256);
    }

    void put(int code) {
        for (int bit = 0; bit < width_; ++bit) {
            group_.push_back((code >> bit & 1) != 0);
        }
        if (group_.size() == static_cast<std::size_t>(8 * width_)) {
            writeGroup();
            out_ += width_;
        }
        if (next_ > largest_ || clear_) {
            writeGroup();
            width_ = clear_ ? 9 : width_ + 1;
            largest_ = width_ == 16 ? 65536 : (1 << width_) - 1;
            clear_ = false;
        }
    }

    void writeGroup() {
        if (group_.empty()) {
            return;
        }
        group_.resize(static_cast<std::size_t>(8 * width_));
        for (std::size_t at = 0; at < group_.size(); at += 8) {
            int byte = 0;
            for (std::size_t bit = 0; bit < 8; ++bit) {
                byte |= group_[at + bit] ? 1 << bit : 0;
            }
            stream_ += static_cast<char>(byte);
        }
        group_.clear();
    }

    std::int64_t in_;
    std::int64_t out_;
    std::int64_t checkpoint_;
    std::int64_t ratio_ = 0;
    int width_ = 9;
    int largest_ = 511;
    int next_ = 258;
    bool clear_ = false;
    std::vector<int> keys_;
    std::vector<int> codes_;
    std::vector<bool> group_;
    std::string stream_;
};

class Decompressor {
public:
    explicit Decompressor(std::string const & stream) : stream_(stream), texts_(65536) {
        for (std::size_t code = 0; code < 256; ++code) {
            texts_[code] = std::string(1, static_cast<char>(code));
        }
    }

    ReferenceData run() {
        ReferenceData result;
        result.end = decode(result.data);
        result.used = at_;
        return result;
    }

private:
    ReferenceEnd decode(std::string & data) {
        if (stream_.compare(0, 3, "\x1F\x9D\x90") != 0) {
            return ReferenceEnd::refused;
        }
        at_ = 3;
        std::string old;
        bool literal = true;
        for (;;) {
            int code = read();
            if (code == 256 && !literal) {
                next_ = 257;
                clear_ = true;
                literal = true;
                code = read();
            }
            if (code < 0 || code == 257) {
                return code < 0 ? ReferenceEnd::cut : ReferenceEnd::endCode;
            }
            if (code > (literal ? 255 : next_)) {
                return ReferenceEnd::refused;
            }
            std::string const text = code == next_ ? old + old[0] : texts_[static_cast<std::size_t>(code)];
            data += text;
            if (!old.empty() && next_ < 65536) {
                texts_[static_cast<std::size_t>(next_++)] = old + text[0];
            }
            old = text;
            literal = false;
        }
    }

    int read() {
        if (clear_ || bit_ + width_ > bits_ || next_ > largest_) {
            if (next_ > largest_) {
                ++width_;
            }
            if (clear_) {
                width_ = 9;
            }
            clear_ = false;
            largest_ = width_ == 16 ? 65536 : (1 << width_) - 1;
            group_ = stream_.substr(at_, static_cast<std::size_t>(width_));
            at_ += group_.size();
            bits_ = 8 * static_cast<int>(group_.size());
            bit_ = 0;
            if (bits_ < width_) {
                return -1;
            }
        }
        int code = 0;
        for (int i = 0; i < width_; ++i, ++bit_) {
            code |= (byteAt(group_, static_cast<std::size_t>(bit_ / 8)) >> (bit_ % 8) & 1) << i;
        }
        return code;
    }

    std::string const & stream_;
    std::size_t at_ = 0;
    std::vector<std::string> texts_;
    int next_ = 258;
    bool clear_ = false;
    int width_ = 9;
    int largest_ = 511;
    std::string group_;
    int bit_ = 0;
    int bits_ = 0;
};

std::uint32_t turn(std::uint32_t word, std::uint32_t by) {
    return (by %= 32) == 0 ? word : word << by | word >> (32 - by);
}

} // namespace

std::string referenceCompress(std::string const & data, ReferenceCounters counters) {
    return Compressor(counters).run(data);
}

ReferenceData referenceDecompress(std::string const & stream) { return Decompressor(stream).run(); }

std::string referenceFrame(std::string const & data, std::uint16_t & sum) {
    std::uint32_t total = sum;
    for (std::size_t at = 0; at < data.size(); at += 2) {
        total += byteAt(data, at) + (at + 1 < data.size() ? 256u * byteAt(data, at + 1) : 0u);
        total = total > 0xFFFF ? total - 0xFFFF : total;
    }
    sum = static_cast<std::uint16_t>(total);
    std::string frame;
    for (std::size_t const field : {data.size(), ~data.size()}) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            frame += static_cast<char>(field >> shift);
        }
    }
    frame += static_cast<char>(sum);
    frame += static_cast<char>(sum >> 8);
    return frame + data;
}

ReferenceTable referenceExpansion(std::uint32_t first, std::uint32_t step, std::array<std::uint32_t, 8> key,
                                  int lastIndex, bool published) {
    ReferenceTable s;
    for (std::size_t n = 0; n < s.size(); ++n) {
        s[n] = n == 0 ? first : s[n - 1] + step;
    }
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    for (std::size_t n = 0; n < 132; ++n) {
        unsigned & word = s[n % 44];
        std::uint32_t & part = key[n % static_cast<std::size_t>(lastIndex + 1)];
        std::uint32_t const before = b;
        a = word = turn(word + a + b, published ? 3 : 5);
        std::uint32_t const t = published ? a + before : before - a;
        b = part = turn(part + t, t);
    }
    return s;
}

void referenceEncipher(unsigned char * block, ReferenceTable const & table) {
    std::uint32_t w[4];
    std::memcpy(w, block, 16);
    w[1] += table[0];
    w[3] += table[1];
    for (std::size_t round = 1; round <= 20; ++round) {
        std::uint32_t const t = turn(w[1] * (2 * w[1] + 1), 5);
        std::uint32_t const u = turn(w[3] * (2 * w[3] + 1), 5);
        w[0] = turn(w[0] ^ t, u) + table[2 * round];
        w[2] = turn(w[2] ^ u, t) + table[2 * round + 1];
        std::rotate(w, w + 1, w + 4);
    }
    w[0] += table[42];
    w[2] += table[43];
    std::memcpy(block, w, 16);
}

std::string referenceEncrypt(std::string const & data, ReferenceTable const & table, bool swapped) {
    auto const swapWords = [&](unsigned char * block) {
        for (int word = 0; word < 16 && swapped; word += 4) {
            std::reverse(block + word, block + word + 4);
        }
    };
    std::string stream(data.empty() ? 0 : 1, swapped ? '\0' : '\1');
    for (std::size_t block = 0; block < data.size(); block += 4096) {
        std::string const part = data.substr(block, 4096);
        for (std::size_t at = 0; at < part.size(); at += 240) {
            std::string frame = part.substr(at, 240);
            for (std::size_t n = 0; n + 16 <= frame.size(); n += 16) {
                auto * const bytes = reinterpret_cast<unsigned char *>(frame.data()) + n;
                swapWords(bytes);
                referenceEncipher(bytes, table);
                swapWords(bytes);
            }
            stream += static_cast<char>(frame.size());
            stream += frame;
        }
    }
    return stream;
}

} // namespace qvTest
