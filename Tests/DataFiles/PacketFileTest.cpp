#include "DataFiles/PacketFileSupport.h"
#include "Support/SeededRandom.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <type_traits>

using namespace qvTest;

namespace {

// Every kind of field by one name.
#define QV_FIELD(name, type, tag, arrayTag)                                                                            \
    void write(ioWriteContext & to, type value) { to.write##name(value); }                                             \
    void write(ioWriteContext & to, type const * values, int count) { to.write##name##Array(values, count); }          \
    void read(ioReadContext & from, type & value) { from.read##name(value); }                                          \
    void read(ioReadContext & from, type * values, int count) { from.read##name##Array(values, count); }
IO_FIELD_TYPES(QV_FIELD)
#undef QV_FIELD

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
void expectValue(Form form, T wanted, T got) {
    T const kept = isAscii(form) ? throughText(wanted) : wanted;
    EXPECT_EQ(0, std::memcmp(&kept, &got, sizeof got)) << +wanted << " came back as " << +got;
}

// One step of a random program that writes a packet, and the one that reads the same again and compares.
struct Step {
    std::function<void(ioWriteContext &)> write;
    std::function<void(ioReadContext &)> check;
};

class Programs {
public:
    explicit Programs(Form form) : form_(form) {}

    std::vector<Step> make() {
#define QV_STEP(name, type, tag, arrayTag) &Programs::numbers<type>,
        static constexpr Step (Programs::*ofNumbers[])() = {IO_FIELD_TYPES(QV_STEP)};
#undef QV_STEP
        Step const end{[](auto & to) { to.endSubPacket(); }, [](auto & from) { from.endSubPacket(); }};
        std::vector<Step> steps;
        int depth = 0;
        for (int i = random_.below(40); i > 0; --i) {
            int const choice = random_.below(10);
            if (choice == 0) {
                steps.push_back({[](auto & to) { to.startChunk(); }, [](auto & from) { from.nextChunk(); }});
            } else if (choice == 1) {
                steps.push_back({[](auto & to) { to.startSubPacket(); }, [](auto & from) { from.startSubPacket(); }});
                ++depth;
            } else if (choice == 2 && depth > 0) {
                steps.push_back(end);
                --depth;
            } else if (choice == 3) {
                steps.push_back(text());
            } else {
                steps.push_back((this->*ofNumbers[random_.below(static_cast<int>(std::size(ofNumbers)))])());
            }
        }
        steps.insert(steps.end(), static_cast<std::size_t>(depth), end);
        return steps;
    }

private:
    template <typename T>
    T number() {
        if constexpr (std::is_same_v<T, bool>) {
            return random_.oneIn(2);
        } else if constexpr (std::is_floating_point_v<T>) {
            using Limits = std::numeric_limits<T>;
            T const special[] = {0, T(-0.0), Limits::infinity(), Limits::max(), Limits::denorm_min(), T(0.1)};
            return random_.oneIn(3) ? special[random_.below(6)]
                                    : static_cast<T>(std::ldexp(double(random_.bits()), random_.below(100) - 80));
        } else {
            T const special[] = {0, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), 7};
            return random_.oneIn(3)
                       ? special[random_.below(4)]
                       : static_cast<T>(std::uint64_t{random_.bits()} << random_.below(33) ^ random_.bits());
        }
    }

    // A field, or an array.
    template <typename T>
    Step numbers() {
        if (!random_.oneIn(6)) {
            T const value = number<T>();
            return {[value](auto & to) { write(to, value); },
                    [value, form = form_](auto & from) {
                        T got{};
                        read(from, got);
                        expectValue(form, value, got);
                    }};
        }
        int const count = random_.below(20);
        std::shared_ptr<T[]> const values(new T[20]);
        std::generate_n(values.get(), count, [this] { return number<T>(); });
        return {[=](auto & to) { write(to, values.get(), count); },
                [=, form = form_](auto & from) {
                    T got[20];
                    read(from, got, count);
                    for (int i = 0; i < count; ++i) {
                        expectValue(form, values[i], got[i]);
                    }
                }};
    }

    Step text() {
        std::string text;
        for (int i = random_.below(30); i > 0; --i) {
            text += random_.oneIn(2) ? "\"<>[\\]{} \n"[random_.below(10)] : static_cast<char>(1 + random_.below(255));
        }
        return {[text](auto & to) { to.writeCString(text.c_str()); },
                [text](auto & from) { EXPECT_STREQ(text.c_str(), from.readCString()); }};
    }

    Form form_;
    SeededRandom random_;
};

} // namespace

class PacketFile : public testing::TestWithParam<Form> {};

INSTANTIATE_TEST_SUITE_P(Forms, PacketFile, testing::ValuesIn(allForms), testing::PrintToStringParamName());

TEST_P(PacketFile, AnyFieldsInAnyNestingComeBack) {
    Programs programs(GetParam());
    for (int round = 0; round < 60; ++round) {
        std::vector<std::vector<Step>> packets;
        std::generate_n(std::back_inserter(packets), 10, [&] { return programs.make(); });
        std::string const file = writeFile(GetParam(), {"t"}, [&](ioWriteContext & to) {
            for (auto const & steps : packets) {
                to.startPacket("t", nullptr);
                std::for_each(steps.begin(), steps.end(), [&](Step const & step) { step.write(to); });
                to.endPacket();
            }
        });
        auto next = packets.begin();
        Reader reader(file, [&](ioReadContext & from) {
            std::for_each(next->begin(), next->end(), [&](Step const & step) { step.check(from); });
            ++next;
        });
        EXPECT_EQ(ioGood, reader.read());
        EXPECT_EQ(packets.end(), next);
        EXPECT_EQ(10, reader.context->getPacketCount());
    }
}

// A reader of an older version stops early at every level; one of a newer version asks for more than there is.
TEST_P(PacketFile, ReadersOfOtherVersionsGetAlong) {
    std::string const file = writeFile(GetParam(), {"t"}, [](ioWriteContext & to) {
        for (int packet = 0; packet < 3; ++packet) {
            to.startPacket("t", nullptr);
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
    Reader reader(file, [&](ioReadContext & from) {
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
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_EQ(3, packet);
}

TEST_P(PacketFile, FieldsBehindThePacketAreZeroAndMakeItBad) {
    std::string const file = writeFile(GetParam(), {"t"}, [](ioWriteContext & to) {
        for (int i = 0; i < 2; ++i) {
            to.startPacket("t", &i);
            to.writeInt(5);
            to.endPacket();
        }
    });
    for (int kind = 0; kind < 4; ++kind) {
        int calls = 0;
        Reader reader(file, [&](ioReadContext & from) {
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
        // The undefined reference of the packet is not reported: a bad packet ends the file first.
        EXPECT_EQ(ioBadData, reader.read()) << kind;
        EXPECT_EQ(1, calls);
    }
}

// A file cut at any byte ends with a status, delivers whole packets only, and never reaches its end.
TEST_P(PacketFile, CutAnywhereEndsWithAStatus) {
    FatalErrorsThrow const hook;
    int object = 0;
    std::string const file = writeFile(GetParam(), {"t"}, [&](ioWriteContext & to) {
        for (int i = 0; i < 3; ++i) {
            to.startPacket("t", nullptr);
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
    // The three packets are alike.
    std::size_t const start = packetsAt(file);
    std::size_t const size = isAscii(GetParam()) ? (file.find("{ 0") - start) / 3 : packetSize(file, start, GetParam());
    for (std::size_t cut = 0; cut < file.size(); ++cut) {
        int delivered = 0;
        Reader reader(file.substr(0, cut), [&](ioReadContext & from) {
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
        int const status = reader.read();
        bool const onlyLastNewlineMissing = isAscii(GetParam()) && cut == file.size() - 1;
        bool const cutInHeader = cut < file.find("@\n", 3) + 2;
        EXPECT_EQ(onlyLastNewlineMissing ? int{ioGood} : cutInHeader ? -1 : int{ioBadData}, status) << cut;
        std::size_t const end = cut + (isAscii(GetParam()) ? 1 : 0); // the last newline may be missing
        std::size_t const whole = end < start ? 0 : std::min<std::size_t>((end - start) / size, 3);
        EXPECT_EQ(static_cast<int>(whole), delivered) << cut;
        if (reader.client) {
            reader.client->freeTexts(nullptr);
        }
    }
}

// Every byte replaced by others: any status, but always an end, and within what the bytes are worth.
TEST_P(PacketFile, DamagedAnywhereEndsWithAStatus) {
    FatalErrorsThrow const hook;
    int object = 0;
    std::string const file = writeFile(GetParam(), {"t"}, [&](ioWriteContext & to) {
        to.startPacket("t", &object);
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
            Reader reader(damaged, [&](ioReadContext & from) {
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
    int object = 0;
    std::string const file =
        writeFile(GetParam(), {"test.unknown", "test.known", "test.plain"}, [&](ioWriteContext & to) {
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
    Object lonely;
    std::string const file = writeFile(GetParam(), {"t"}, [&](ioWriteContext & to) {
        for (Object const & object : objects) {
            to.startPacket("t", &object);
            EXPECT_GT(to.writeReference(object.next, false), 0);
            to.writeReference(object.self, false);
            to.endPacket();
        }
        to.startPacket("t", &lonely);
        to.writeReference(nullptr, false);
        to.writeReference(nullptr, false);
        to.endPacket();
    });
    std::vector<Object> read(objects.size() + 1);
    std::size_t next = 0;
    Reader reader(file, [&](ioReadContext & from) {
        Object & object = read.at(next++);
        from.definePacketReference(&object);
        from.readReferenceUsage(&object.next, 0);
        from.readReferenceUsage(&object.self, 0);
    });
    ASSERT_EQ(ioGood, reader.read());
    for (std::size_t i = 0; i < objects.size(); ++i) {
        ASSERT_EQ(&read[(i * 7 + 1) % objects.size()], read[i].next) << i;
        ASSERT_EQ(&read[i], read[i].self);
    }
    EXPECT_EQ(nullptr, read.back().next);
    EXPECT_THAT(reader.types.type(0).unreferenced, testing::ElementsAre(&read.back()));
    EXPECT_TRUE(reader.types.type(0).isUnreferenced());
}

TEST_P(PacketFile, InnerPacketsStandBeforeOuterOnesAndDroppedOnesLeaveNoTrace) {
    std::string const file = writeFile(GetParam(), {"t"}, [](ioWriteContext & to) {
        for (int depth = 0; depth < 25; ++depth) {
            to.startPacket("t", nullptr);
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
    Reader reader(file, [&](ioReadContext & from) {
        seen.push_back(from.readInt());
        EXPECT_EQ(seen.back(), from.readInt());
    });
    EXPECT_EQ(ioGood, reader.read());
    std::vector<int> wanted(25);
    std::iota(wanted.rbegin(), wanted.rend(), 0);
    std::erase(wanted, 12);
    EXPECT_EQ(wanted, seen);
}

TEST_P(PacketFile, LargePacketsGrowTheirBuffers) {
    std::vector<int> elements(200000);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i] = static_cast<int>(i * 2654435761u);
    }
    std::string const text(70000, '}');
    std::string const file = writePacket(GetParam(), [&](ioWriteContext & to) {
        to.writeIntArray(elements.data(), static_cast<int>(elements.size()));
        to.writeCString(text.c_str());
    });
    int calls = 0;
    Reader reader(file, [&](ioReadContext & from) {
        std::vector<int> got(elements.size());
        from.readIntArray(got.data(), static_cast<int>(got.size()));
        EXPECT_TRUE(elements == got);
        EXPECT_TRUE(text == from.readCString());
        ++calls;
    });
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_EQ(1, calls);
}

TEST_P(PacketFile, SeveralFilesFollowOneAnotherInAStream) {
    auto const fileOf = [](Form form, int value) {
        return writePacket(form, [value](ioWriteContext & to) { to.writeInt(value); });
    };
    std::vector<int> seen;
    Form const other = isAscii(GetParam()) ? Form::binary : Form::ascii;
    Reader reader(fileOf(GetParam(), 1) + fileOf(GetParam(), 2) + fileOf(other, 3),
                  [&](ioReadContext & from) { seen.push_back(from.readInt()); });
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_TRUE(reader.context->reusePacketFile());
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_THAT(seen, testing::ElementsAre(1, 2));
    EXPECT_EQ(2, reader.context->getPacketCount());
    EXPECT_FALSE(reader.context->reusePacketFile());
    EXPECT_TRUE(reader.context->good());

    Reader single(fileOf(GetParam(), 1), {});
    EXPECT_EQ(ioGood, single.read());
    EXPECT_FALSE(single.context->reusePacketFile());
    EXPECT_TRUE(single.context->good());
}

TEST_P(PacketFile, HaltStopsBehindThePacketAndFlagsOfOtherKindsSkipIt) {
    std::string file = writeFile(GetParam(), {"t"}, [&](ioWriteContext & to) {
        for (int i = 0; i < 4; ++i) {
            to.startPacket("t", nullptr);
            to.writeInt(i);
            to.endPacket();
        }
    });
    std::size_t const flagAt = packetsAt(file) + 4;
    file[isSwapped(GetParam()) ? flagAt + 3 : flagAt] = isAscii(GetParam()) ? '2' : 2;
    std::vector<int> seen;
    Reader reader(file, [&](ioReadContext & from) {
        seen.push_back(from.readInt());
        if (seen.back() == 2) {
            from.halt();
        }
    });
    EXPECT_EQ(ioHalted, reader.read());
    EXPECT_THAT(seen, testing::ElementsAre(1, 2));
    EXPECT_EQ(3, reader.context->getPacketCount());
}

TEST_P(PacketFile, AReferenceThatNobodyDefinedIsFatal) {
    int object = 0;
    std::string const file = writeFile(GetParam(), {"t"}, [&](ioWriteContext & to) {
        to.startPacket("t", &object);
        to.endPacket();
    });
    Reader reader(file, [](ioReadContext &) {});
    EXPECT_EQ("ioPacketFile: A packet type: 't'\n"
              "  had a reference associated with it but no \n"
              "  definition was provided by the client code.\n"
              "  The undefined reference is: 1.\n"
              "ioPacketFile: Fatal error.  Aborting.\n",
              fatalTextOf([&] { reader.read(); }));
}

TEST_P(PacketFile, WrongTagsOfDebugFilesAreFatal) {
    bool reached = false;
    Reader reader(writePacket(GetParam(), [](ioWriteContext & to) { to.writeFloat(1.0f); }), [&](ioReadContext & from) {
        from.readInt();
        reached = true;
    });
    EXPECT_EQ(isDebug(GetParam()) ? "Packet file type mismatch:\n   got: Float (66)\n   expected: Int (69)\n"
                                    "ioPacketFile: Fatal error.  Aborting.\n"
                                  : "",
              fatalTextOf([&] { reader.read(); }));
    EXPECT_EQ(!isDebug(GetParam()), reached);
}
