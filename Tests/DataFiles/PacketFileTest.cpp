#include "DataFiles/PacketFileSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <type_traits>
#include <variant>

using namespace qvTest;

namespace {

using Value = std::variant<bool, char, unsigned char, short, unsigned short, int, unsigned, std::int64_t, std::uint64_t,
                           float, double>;

void write(ioWriteContext & to, Value const & value) {
    std::visit(
        [&](auto v) {
            using T = decltype(v);
#define QV_WRITE(name, type, tag, arrayTag)                                                                            \
    if constexpr (std::is_same_v<T, type>) {                                                                           \
        to.write##name(v);                                                                                             \
    }
            IO_FIELD_TYPES(QV_WRITE)
#undef QV_WRITE
        },
        value);
}

template <typename T>
void writeArray(ioWriteContext & to, T const * values, int count) {
#define QV_WRITE(name, type, tag, arrayTag)                                                                            \
    if constexpr (std::is_same_v<T, type>) {                                                                           \
        to.write##name##Array(values, count);                                                                          \
    }
    IO_FIELD_TYPES(QV_WRITE)
#undef QV_WRITE
}

template <typename T>
T readOne(ioReadContext & from) {
#define QV_READ(name, type, tag, arrayTag)                                                                             \
    if constexpr (std::is_same_v<T, type>) {                                                                           \
        T value;                                                                                                       \
        from.read##name(value);                                                                                        \
        return value;                                                                                                  \
    }
    IO_FIELD_TYPES(QV_READ)
#undef QV_READ
}

template <typename T>
void readArray(ioReadContext & from, T * values, int count) {
#define QV_READ(name, type, tag, arrayTag)                                                                             \
    if constexpr (std::is_same_v<T, type>) {                                                                           \
        from.read##name##Array(values, count);                                                                         \
    }
    IO_FIELD_TYPES(QV_READ)
#undef QV_READ
}

// What an ASCII form keeps of a number.
template <typename T>
T throughText(T value) {
    char text[64];
    if constexpr (std::is_floating_point_v<T>) {
        std::snprintf(text, sizeof text, std::is_same_v<T, float> ? "%.7g" : "%.16g", static_cast<double>(value));
        return static_cast<T>(std::strtod(text, nullptr));
    }
    return value;
}

template <typename T>
bool sameBits(T a, T b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// One step of a random program that writes a packet; reading takes the same steps and compares.
struct Step {
    enum Kind { field, array, text, startChunk, startSubPacket, endSubPacket } kind;
    Value value = false;
    std::string bytes; // text, or the elements of an array as bytes
};

class Programs {
public:
    explicit Programs(unsigned seed) : random_(seed) {}

    std::vector<Step> make() {
        std::vector<Step> steps;
        int depth = 0;
        for (int i = below(40); i > 0; --i) {
            switch (below(10)) {
            case 0:
                steps.push_back({Step::startChunk, false, ""});
                break;
            case 1:
                steps.push_back({Step::startSubPacket, false, ""});
                ++depth;
                break;
            case 2:
                if (depth > 0) {
                    steps.push_back({Step::endSubPacket, false, ""});
                    --depth;
                }
                break;
            case 3:
                steps.push_back({Step::text, false, makeText()});
                break;
            case 4:
                steps.push_back(makeArray());
                break;
            default:
                steps.push_back({Step::field, makeValue(), ""});
            }
        }
        for (; depth > 0; --depth) {
            steps.push_back({Step::endSubPacket, false, ""});
        }
        return steps;
    }

private:
    int below(int bound) { return static_cast<int>(random_() % static_cast<unsigned>(bound)); }

    template <typename T>
    T makeNumber() {
        if constexpr (std::is_same_v<T, bool>) {
            return below(2) == 1;
        } else if constexpr (std::is_floating_point_v<T>) {
            T const special[] = {0,
                                 T(-0.0),
                                 std::numeric_limits<T>::infinity(),
                                 std::numeric_limits<T>::max(),
                                 std::numeric_limits<T>::denorm_min(),
                                 T(0.1)};
            return below(3) == 0 ? special[below(6)] : static_cast<T>(std::ldexp(double(random_()), below(100) - 80));
        } else {
            T const special[] = {0, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), 7};
            return below(3) == 0 ? special[below(4)]
                                 : static_cast<T>(std::uint64_t{random_()} << below(33) ^ random_());
        }
    }

    template <std::size_t... index>
    Value valueOf(std::size_t which, std::index_sequence<index...>) {
        Value value;
        ((which == index ? void(value = makeNumber<std::variant_alternative_t<index, Value>>()) : void()), ...);
        return value;
    }
    Value makeValue() {
        return valueOf(static_cast<std::size_t>(below(11)), std::make_index_sequence<std::variant_size_v<Value>>());
    }

    std::string makeText() {
        std::string text;
        for (int i = below(30); i > 0; --i) {
            text += below(2) == 0 ? "\"<>[\\]{} \n"[below(10)] : static_cast<char>(1 + below(255));
        }
        return text;
    }

    Step makeArray() {
        Step step{Step::array, makeValue(), ""};
        std::visit(
            [&](auto sample) {
                for (int i = below(20); i > 0; --i) {
                    auto const element = makeNumber<decltype(sample)>();
                    step.bytes.append(reinterpret_cast<char const *>(&element), sizeof element);
                }
            },
            step.value);
        return step;
    }

    std::mt19937 random_;
};

void run(std::vector<Step> const & steps, ioWriteContext & to) {
    for (Step const & step : steps) {
        switch (step.kind) {
        case Step::field:
            write(to, step.value);
            break;
        case Step::text:
            to.writeCString(step.bytes.c_str());
            break;
        case Step::startChunk:
            to.startChunk();
            break;
        case Step::startSubPacket:
            to.startSubPacket();
            break;
        case Step::endSubPacket:
            to.endSubPacket();
            break;
        case Step::array:
            std::visit(
                [&](auto sample) {
                    using T = decltype(sample);
                    std::vector<T> const elements(reinterpret_cast<T const *>(step.bytes.data()),
                                                  reinterpret_cast<T const *>(step.bytes.data() + step.bytes.size()));
                    std::unique_ptr<T[]> const copy(new T[elements.size() + 1]);
                    std::copy(elements.begin(), elements.end(), copy.get());
                    writeArray(to, copy.get(), static_cast<int>(elements.size()));
                },
                step.value);
        }
    }
}

template <typename T>
void expectValue(Form form, T wanted, T got) {
    T const kept = isAscii(form) ? throughText(wanted) : wanted;
    EXPECT_TRUE(sameBits(kept, got)) << +wanted << " came back as " << +got;
}

void check(std::vector<Step> const & steps, Form form, ioReadContext & from) {
    for (Step const & step : steps) {
        switch (step.kind) {
        case Step::field:
            std::visit([&](auto wanted) { expectValue(form, wanted, readOne<decltype(wanted)>(from)); }, step.value);
            break;
        case Step::text:
            EXPECT_STREQ(step.bytes.c_str(), from.readCString());
            break;
        case Step::startChunk:
            from.nextChunk();
            break;
        case Step::startSubPacket:
            from.startSubPacket();
            break;
        case Step::endSubPacket:
            from.endSubPacket();
            break;
        case Step::array:
            std::visit(
                [&](auto sample) {
                    using T = decltype(sample);
                    std::size_t const count = step.bytes.size() / sizeof(T);
                    std::unique_ptr<T[]> const wanted(new T[count + 1]);
                    std::unique_ptr<T[]> const got(new T[count + 1]);
                    std::memcpy(wanted.get(), step.bytes.data(), step.bytes.size());
                    readArray(from, got.get(), static_cast<int>(count));
                    for (std::size_t i = 0; i < count; ++i) {
                        expectValue(form, wanted[i], got[i]);
                    }
                },
                step.value);
        }
    }
}

} // namespace

class PacketFile : public testing::TestWithParam<Form> {};

INSTANTIATE_TEST_SUITE_P(Forms, PacketFile, testing::ValuesIn(allForms), testing::PrintToStringParamName());

TEST_P(PacketFile, AnyFieldsInAnyNestingComeBack) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Programs programs(seed);
        std::vector<std::vector<Step>> packets;
        for (unsigned i = 0; i < 10; ++i) {
            packets.push_back(programs.make());
        }
        TestRegistry writing(false);
        writing.with("test.program");
        std::string const file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
            for (auto const & steps : packets) {
                to.startPacket("test.program", nullptr);
                run(steps, to);
                to.endPacket();
            }
        });
        std::size_t next = 0;
        TestRegistry reading(true);
        reading.with("test.program", [&](ioReadContext & from) { check(packets.at(next++), GetParam(), from); });
        Reader reader(file, reading);
        EXPECT_EQ(ioGood, reader.read());
        EXPECT_EQ(packets.size(), next);
        EXPECT_EQ(10, reader.context->getPacketCount());
    }
}

// A reader of an older version stops early at every level; one of a newer version asks for more than there is.
TEST_P(PacketFile, ReadersOfOtherVersionsGetAlong) {
    TestRegistry writing(false);
    writing.with("test.versions");
    std::string const file = writeFile(GetParam(), writing, [](ioWriteContext & to) {
        for (int packet = 0; packet < 3; ++packet) {
            to.startPacket("test.versions", nullptr);
            to.writeInt(packet);
            to.startChunk();
            to.writeInt(10);
            to.writeCString("]>}[<{ \"");
            to.startSubPacket();
            to.writeInt(20);
            to.startChunk();
            to.writeInt(21);
            to.startChunk();
            to.writeInt(22);
            to.endSubPacket();
            to.startChunk();
            to.startChunk();
            to.writeInt(30);
            to.endPacket();
        }
    });
    int packet = 0;
    TestRegistry reading(true);
    reading.with("test.versions", [&](ioReadContext & from) {
        EXPECT_EQ(packet, from.readInt());
        from.nextChunk();
        EXPECT_TRUE(from.chunkHasData());
        if (packet == 1) { // the sub-packet as an old reader knows it, with one chunk
            EXPECT_EQ(10, from.readInt());
            EXPECT_STREQ("]>}[<{ \"", from.readCString());
            from.startSubPacket();
            EXPECT_EQ(20, from.readInt());
            from.nextChunk();
            from.endSubPacket();
        } else if (packet == 2) { // everything, and more than there is
            EXPECT_EQ(10, from.readInt());
            from.readCString();
            from.startSubPacket();
            EXPECT_EQ(20, from.readInt());
            from.nextChunk();
            EXPECT_EQ(21, from.readInt());
            EXPECT_EQ(0, from.readInt());
            EXPECT_EQ(0.0, from.readDouble());
            EXPECT_FALSE(from.readBool());
            char const * const text = from.readCString();
            EXPECT_TRUE(isAscii(GetParam()) ? text == nullptr : text && !*text);
            from.nextChunk();
            EXPECT_EQ(22, from.readInt());
            from.nextChunk();
            EXPECT_FALSE(from.chunkHasData());
            from.endSubPacket();
            EXPECT_EQ(0, from.readInt());
            from.startSubPacket();
            EXPECT_EQ(0, from.readInt());
            from.endSubPacket();
        }
        from.nextChunk();
        EXPECT_FALSE(from.chunkHasData());
        from.nextChunk();
        EXPECT_TRUE(from.chunkHasData());
        EXPECT_EQ(30, from.readInt());
        EXPECT_EQ(0, from.readInt());
        from.nextChunk();
        EXPECT_FALSE(from.chunkHasData());
        from.nextChunk();
        EXPECT_FALSE(from.chunkHasData());
        ++packet;
    });
    Reader reader(file, reading);
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_EQ(3, packet);
}

TEST_P(PacketFile, FieldsBehindThePacketAreZeroAndMakeItBad) {
    TestRegistry writing(false);
    writing.with("test.short");
    std::string const file = writeFile(GetParam(), writing, [](ioWriteContext & to) {
        for (int i = 0; i < 2; ++i) {
            to.startPacket("test.short", &i);
            to.writeInt(5);
            to.endPacket();
        }
    });
    for (int kind = 0; kind < 4; ++kind) {
        int calls = 0;
        TestRegistry reading(true);
        reading.with("test.short", [&](ioReadContext & from) {
            ++calls;
            EXPECT_EQ(5, from.readInt());
            int array[3] = {1, 1, 1};
            switch (kind) {
            case 0:
                EXPECT_EQ(0u, from.readUInt64());
                break;
            case 1:
                EXPECT_EQ(isAscii(GetParam()), from.readCString() == nullptr);
                break;
            case 2:
                from.readIntArray(array, 3);
                EXPECT_THAT(array, testing::Each(0));
                break;
            default:
                from.startSubPacket();
                EXPECT_EQ(0, from.readReference());
                from.endSubPacket();
            }
        });
        Reader reader(file, reading);
        // The undefined reference of the packet is not reported: a bad packet ends the file first.
        EXPECT_EQ(ioBadData, reader.read()) << kind;
        EXPECT_EQ(1, calls);
    }
}

// A file cut at any byte ends with a status, delivers whole packets only, and never reaches its end.
TEST_P(PacketFile, CutAnywhereEndsWithAStatus) {
    FatalErrorsThrow const hook;
    TestRegistry writing(false);
    writing.with("test.cut");
    int object = 0;
    std::string const file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
        for (int i = 0; i < 3; ++i) {
            to.startPacket("test.cut", nullptr);
            to.writeReference(&object, false);
            to.startChunk();
            to.writeCString("te}xt");
            to.startSubPacket();
            to.writeDouble(1.5);
            to.endSubPacket();
            to.endPacket();
        }
        to.writeCStringPacket("end");
    });
    std::vector<std::size_t> ends; // of the three packets, which are alike
    std::size_t const size = (file.find(isAscii(GetParam()) ? "{ 0" : "end") - packetsAt(file)) / 3;
    for (std::size_t i = 1; i <= 3; ++i) {
        std::size_t const one = isAscii(GetParam()) ? size : packetSize(file, packetsAt(file), GetParam());
        ends.push_back(packetsAt(file) + i * one);
    }
    for (std::size_t cut = 0; cut < file.size(); ++cut) {
        int delivered = 0;
        TestRegistry reading(true);
        reading.with("test.cut", [&](ioReadContext & from) {
            void * pointer = nullptr;
            from.readReferenceUsage(&pointer, 0);
            from.nextChunk();
            char const * const text = from.readCString();
            EXPECT_STREQ("te}xt", text);
            from.startSubPacket();
            EXPECT_EQ(1.5, from.readDouble());
            from.endSubPacket();
            ++delivered;
        });
        Reader reader(file.substr(0, cut), reading);
        int const status = reader.read();
        bool const onlyLastNewlineMissing = isAscii(GetParam()) && cut == file.size() - 1;
        bool const cutInHeader = cut < file.find("@\n", 3) + 2;
        EXPECT_EQ(onlyLastNewlineMissing ? int{ioGood} : cutInHeader ? -1 : int{ioBadData}, status) << cut;
        auto const whole = std::count_if(ends.begin(), ends.end(), [&](std::size_t end) {
            return end <= cut + (isAscii(GetParam()) ? 1 : 0); // the last newline may be missing
        });
        EXPECT_EQ(whole, delivered) << cut;
        if (reader.client) {
            reader.client->freeTexts(nullptr);
        }
    }
}

// Every byte replaced by others: any status, but always an end, and within what the bytes are worth.
TEST_P(PacketFile, DamagedAnywhereEndsWithAStatus) {
    FatalErrorsThrow const hook;
    TestRegistry writing(false);
    writing.with("test.damaged");
    int object = 0;
    std::string const file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
        to.startPacket("test.damaged", &object);
        to.writeReference(&to, false);
        to.startChunk();
        to.writeCString("text");
        to.startSubPacket();
        to.writeInt(3);
        to.writeIntArray(&object, 1);
        to.endSubPacket();
        to.endPacket();
    });
    std::map<int, int> statuses;
    for (std::size_t at = 0; at < file.size(); ++at) {
        for (int const value : {0, 0x7f, 0x80, 0xff, int{'}'}, int{']'}, int{'>'}, int{'9'}, int{'-'}, int{' '}}) {
            std::string damaged = file;
            damaged[at] = static_cast<char>(value);
            void * location = nullptr;
            TestRegistry reading(true);
            reading.with("test.damaged", [&](ioReadContext & from) {
                from.definePacketReference(&object);
                from.readReferenceUsage(&location, 0);
                from.nextChunk();
                from.readCString();
                from.startSubPacket();
                int elements[4];
                from.readIntArray(elements, std::clamp(from.readInt(), 0, 4));
                from.endSubPacket();
                from.nextChunk();
                from.nextChunk();
            });
            Reader reader(damaged, reading);
            try {
                ++statuses[reader.read()];
            } catch (FatalErrorsThrow::Thrown const & thrown) {
                // Only where a tag is wrong: every reader here defines its packet's reference.
                EXPECT_TRUE(isDebug(GetParam())) << thrown.text;
                EXPECT_EQ(0u, thrown.text.find("Packet file type mismatch:\n"));
            }
            if (reader.client) {
                reader.client->freeTexts(&object);
            }
        }
    }
    // Some damage is none to this reader, most of it shows, and there is no other way to end.
    EXPECT_GT(statuses[ioGood], 20);
    EXPECT_GT(statuses[ioBadData], 100);
    EXPECT_GT(statuses[-1], 30);
    EXPECT_EQ(3u, statuses.size());
}

TEST_P(PacketFile, UnknownTypesAreSkippedAndCounted) {
    TestRegistry writing(false);
    writing.with("test.unknown").with("test.known").with("test.plain");
    int object = 0;
    std::string const file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
        for (int i = 0; i < 3; ++i) {
            to.startPacket("test.unknown", i == 0 ? &object : nullptr);
            to.writeCString("{}");
            to.endPacket();
            to.startPacket("test.plain", nullptr);
            to.endPacket();
            to.startPacket("test.known", nullptr);
            to.writeReference(&object, false);
            to.endPacket();
        }
    });
    void * locations[3] = {&object, &object, &object};
    int next = 0;
    TestRegistry reading(true);
    reading.with("test.known", [&](ioReadContext & from) {
        from.readReferenceUsage(&locations[next], 70 + next);
        ++next;
    });
    Reader reader(file, reading);
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_EQ(3, next);
    EXPECT_THAT(locations, testing::Each(nullptr));
    EXPECT_EQ(3, reading.lookup("test.unknown")->getNumUsages());
    using Report = std::pair<void *, int>;
    EXPECT_THAT(reading.type(0).unresolved,
                testing::ElementsAre(Report(&locations[2], 72), Report(&locations[1], 71), Report(&locations[0], 70)));
    EXPECT_TRUE(reading.type(0).isUnresolved());
    EXPECT_FALSE(reading.type(0).isUnreferenced());
}

TEST_P(PacketFile, GraphsWithCyclesComeBack) {
    struct Object {
        Object * next = nullptr;
        Object * self = nullptr;
    };
    std::vector<Object> objects(3000);
    for (std::size_t i = 0; i < objects.size(); ++i) {
        objects[i] = {&objects[(i * 7 + 1) % objects.size()], &objects[i]};
    }
    TestRegistry writing(false);
    writing.with("test.object");
    Object lonely;
    std::string const file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
        for (Object const & object : objects) {
            to.startPacket("test.object", &object);
            EXPECT_GT(to.writeReference(object.next, false), 0);
            to.writeReference(object.self, false);
            to.endPacket();
        }
        to.startPacket("test.object", &lonely);
        to.writeReference(nullptr, false);
        to.writeReference(nullptr, false);
        to.endPacket();
    });
    std::vector<Object> read(objects.size() + 1);
    std::size_t next = 0;
    TestRegistry reading(true);
    reading.with("test.object", [&](ioReadContext & from) {
        Object & object = read.at(next++);
        from.definePacketReference(&object);
        from.readReferenceUsage(&object.next, 0);
        from.readReferenceUsage(&object.self, 0);
    });
    Reader reader(file, reading);
    ASSERT_EQ(ioGood, reader.read());
    for (std::size_t i = 0; i < objects.size(); ++i) {
        ASSERT_EQ(&read[(i * 7 + 1) % objects.size()], read[i].next) << i;
        ASSERT_EQ(&read[i], read[i].self);
    }
    EXPECT_EQ(nullptr, read.back().next);
    EXPECT_THAT(reading.type(0).unreferenced, testing::ElementsAre(&read.back()));
    EXPECT_TRUE(reading.type(0).isUnreferenced());
}

TEST_P(PacketFile, InnerPacketsStandBeforeOuterOnesAndDroppedOnesLeaveNoTrace) {
    TestRegistry writing(false);
    writing.with("test.nested");
    std::string const file = writeFile(GetParam(), writing, [](ioWriteContext & to) {
        for (int depth = 0; depth < 25; ++depth) {
            to.startPacket("test.nested", nullptr);
            to.writeInt(depth);
        }
        for (int depth = 24; depth >= 0; --depth) {
            to.writeInt(depth);
            if (depth == 12) {
                to.invalidPacket();
            }
            to.endPacket();
        }
    });
    std::vector<int> seen;
    TestRegistry reading(true);
    reading.with("test.nested", [&](ioReadContext & from) {
        seen.push_back(from.readInt());
        EXPECT_EQ(seen.back(), from.readInt());
    });
    Reader reader(file, reading);
    EXPECT_EQ(ioGood, reader.read());
    std::vector<int> wanted;
    for (int depth = 24; depth >= 0; --depth) {
        if (depth != 12) {
            wanted.push_back(depth);
        }
    }
    EXPECT_EQ(wanted, seen);
}

TEST_P(PacketFile, LargePacketsGrowTheirBuffers) {
    std::vector<int> elements(200000);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i] = static_cast<int>(i * 2654435761u);
    }
    std::string const text(70000, '}');
    TestRegistry writing(false);
    writing.with("test.large");
    std::string const file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
        to.startPacket("test.large", nullptr);
        to.writeIntArray(elements.data(), static_cast<int>(elements.size()));
        to.writeCString(text.c_str());
        to.endPacket();
    });
    int calls = 0;
    TestRegistry reading(true);
    reading.with("test.large", [&](ioReadContext & from) {
        std::vector<int> got(elements.size());
        from.readIntArray(got.data(), static_cast<int>(got.size()));
        EXPECT_TRUE(elements == got);
        EXPECT_TRUE(text == from.readCString());
        ++calls;
    });
    Reader reader(file, reading);
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_EQ(1, calls);
}

TEST_P(PacketFile, SeveralFilesFollowOneAnotherInAStream) {
    TestRegistry writing(false);
    writing.with("test.value");
    auto const fileOf = [&](Form form, int value) {
        return writeFile(form, writing, [&](ioWriteContext & to) {
            to.startPacket("test.value", nullptr);
            to.writeInt(value);
            to.endPacket();
        });
    };
    std::vector<int> seen;
    TestRegistry reading(true);
    reading.with("test.value", [&](ioReadContext & from) { seen.push_back(from.readInt()); });
    Form const other = isAscii(GetParam()) ? Form::binary : Form::ascii;
    Reader reader(fileOf(GetParam(), 1) + fileOf(GetParam(), 2) + fileOf(other, 3), reading);
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_TRUE(reader.context->reusePacketFile());
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_THAT(seen, testing::ElementsAre(1, 2));
    EXPECT_EQ(2, reader.context->getPacketCount());
    EXPECT_FALSE(reader.context->reusePacketFile());
    EXPECT_TRUE(reader.context->good());

    Reader single(fileOf(GetParam(), 1), reading);
    EXPECT_EQ(ioGood, single.read());
    EXPECT_FALSE(single.context->reusePacketFile());
    EXPECT_TRUE(single.context->good());
}

TEST_P(PacketFile, HaltStopsBehindThePacketAndFlagsOfOtherKindsSkipIt) {
    TestRegistry writing(false);
    writing.with("test.value");
    std::string file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
        for (int i = 0; i < 4; ++i) {
            to.startPacket("test.value", nullptr);
            to.writeInt(i);
            to.endPacket();
        }
    });
    std::size_t const flagAt = packetsAt(file) + 4;
    file[isSwapped(GetParam()) ? flagAt + 3 : flagAt] = isAscii(GetParam()) ? '2' : 2;
    std::vector<int> seen;
    TestRegistry reading(true);
    reading.with("test.value", [&](ioReadContext & from) {
        seen.push_back(from.readInt());
        if (seen.back() == 2) {
            from.halt();
        }
    });
    Reader reader(file, reading);
    EXPECT_EQ(ioHalted, reader.read());
    EXPECT_THAT(seen, testing::ElementsAre(1, 2));
    EXPECT_EQ(3, reader.context->getPacketCount());
}

TEST_P(PacketFile, AReferenceThatNobodyDefinedIsFatal) {
    TestRegistry writing(false);
    writing.with("test.owner");
    int object = 0;
    std::string const file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
        to.startPacket("test.owner", &object);
        to.endPacket();
    });
    FatalErrorsThrow const hook;
    TestRegistry reading(true);
    reading.with("test.owner", [](ioReadContext &) {});
    Reader reader(file, reading);
    try {
        reader.read();
        FAIL() << "the missing definition went unnoticed";
    } catch (FatalErrorsThrow::Thrown const & thrown) {
        EXPECT_EQ("ioPacketFile: A packet type: 'test.owner'\n"
                  "  had a reference associated with it but no \n"
                  "  definition was provided by the client code.\n"
                  "  The undefined reference is: 1.\n"
                  "ioPacketFile: Fatal error.  Aborting.\n",
                  thrown.text);
    }
}

TEST_P(PacketFile, WrongTagsOfDebugFilesAreFatal) {
    TestRegistry writing(false);
    writing.with("test.tags");
    std::string const file = writeFile(GetParam(), writing, [&](ioWriteContext & to) {
        to.startPacket("test.tags", nullptr);
        to.writeFloat(1.0f);
        to.endPacket();
    });
    FatalErrorsThrow const hook;
    bool reached = false;
    TestRegistry reading(true);
    reading.with("test.tags", [&](ioReadContext & from) {
        from.readInt();
        reached = true;
    });
    Reader reader(file, reading);
    if (!isDebug(GetParam())) {
        EXPECT_EQ(ioGood, reader.read());
        EXPECT_TRUE(reached);
        return;
    }
    try {
        reader.read();
        FAIL() << "the wrong tag went unnoticed";
    } catch (FatalErrorsThrow::Thrown const & thrown) {
        EXPECT_EQ("Packet file type mismatch:\n   got: Float (66)\n   expected: Int (69)\n"
                  "ioPacketFile: Fatal error.  Aborting.\n",
                  thrown.text);
    }
    EXPECT_FALSE(reached);
}
