#include "Base/DataFiles/Internal/ioReferenceMapImpl.h"
#include "DataFiles/PacketFileSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>

using namespace qvTest;

TEST(ReferenceTable, GrowsInTheStepsInWhichNumbersCome) {
    for (auto const & [reference, count] : {std::pair(5, 10), std::pair(50, 100), std::pair(500, 1000),
                                            std::pair(5000, 25000), std::pair(9, 10), std::pair(10, 100)}) {
        ioReferenceTable table;
        table.touch(reference);
        EXPECT_EQ(count, table.numDense()) << reference;
    }
    // The places stay where they are while the table grows, on both sides of a block's end.
    ioReferenceTable table;
    ioReferenceRecord const * const last = &table.touch(2082);
    ioReferenceRecord const * const first = &table.touch(2083);
    for (int reference = 1; reference < 300000; ++reference) {
        table.touch(reference).uses = reference;
    }
    EXPECT_EQ(last, table.find(2082));
    EXPECT_EQ(first, table.find(2083));
    for (int reference = 1; reference < 300000; ++reference) {
        ASSERT_EQ(reference, table.find(reference)->uses);
    }
}

// Numbers of any size against a standard map, with the dense table growing over the sparse ones meanwhile.
TEST(ReferenceTable, SparseAndDenseNumbersAreOneTable) {
    std::mt19937 random(7);
    ioReferenceTable table;
    std::map<int, int> model;
    for (int i = 0; i < 60000; ++i) {
        int const reach = 1 << (4 + random() % 26);
        int const reference = 1 + static_cast<int>(random() % static_cast<unsigned>(reach));
        ++model[reference];
        ++table.touch(reference).uses;
        EXPECT_EQ(model.rbegin()->first, table.highest());
        int const other = 1 + static_cast<int>(random() % static_cast<unsigned>(reach));
        ioReferenceRecord const * const found = table.find(other);
        ASSERT_EQ(model.count(other), found ? 1u : 0u);
        ASSERT_TRUE(!found || found->uses == model[other]);
    }
    auto next = model.begin();
    table.forEachTouched([&](int reference, ioReferenceRecord const & record) {
        ASSERT_EQ(next->first, reference);
        ASSERT_EQ(next->second, record.uses);
        ++next;
    });
    EXPECT_TRUE(next == model.end());
    // In proportion to the numbers that are in use.
    EXPECT_LE(table.numDense(), 16 * 60000 + 65536 + 20000);
    ioReferenceTable hostile;
    for (int bit = 0; bit < 30; ++bit) {
        hostile.touch(1 << bit);
    }
    EXPECT_LE(hostile.numDense(), 90000);
    EXPECT_EQ(nullptr, hostile.find(-5));
    EXPECT_EQ(nullptr, hostile.find(0));
}

TEST(ReferenceMap, KeepsTheProtocolOfPointersAndNumbers) {
    qv::Reference<ioReferenceMap> const map(ioPacketFileNewReferenceMap());
    ioPacketType const type("t");
    int objects[4] = {};
    EXPECT_EQ(0, map->getReference(nullptr));
    EXPECT_EQ(-1, map->getReference(&objects[0]));
    EXPECT_EQ(1, map->newReference(&objects[0]));
    EXPECT_FALSE(map->isDefined(1));
    EXPECT_EQ(&objects[0], map->getDefinition(1));
    map->markDefined(1, &type);
    EXPECT_TRUE(map->isDefined(1));
    map->setDefinition(1, &objects[1], true); // an alias: both pointers know the number, the newest is the definition
    EXPECT_EQ(1, map->getReference(&objects[0]));
    EXPECT_EQ(1, map->getReference(&objects[1]));
    EXPECT_EQ(&objects[1], map->getDefinition(1));
    map->setDefinition(2, nullptr, false);
    map->setDefinition(0, &objects[2], false);
    map->setDefinition(-7, &objects[2], false);
    map->setDefinition(0x7fff0000, &objects[2], false);
    map->markDefined(0, &type);
    map->markUsed(0x7fffffff, &type, 0);
    EXPECT_EQ(-1, map->getReference(&objects[2]));
    for (int const reference : {-1, 0, 2, 0x7fffffff}) {
        EXPECT_FALSE(map->isDefined(reference));
        EXPECT_EQ(nullptr, map->getDefinition(reference));
    }

    map->undefine(&objects[3]);
    map->undefine(&objects[0]);
    EXPECT_EQ(-1, map->getReference(&objects[0]));
    EXPECT_EQ(-1, map->getReference(&objects[1]));
    EXPECT_FALSE(map->isDefined(1));
    EXPECT_EQ(nullptr, map->getDefinition(1));
    map->setDefinition(1, &objects[0], false); // binds, and does not revive
    EXPECT_FALSE(map->isDefined(1));
    EXPECT_EQ(-1, map->getReference(&objects[0]));
    map->setDefinition(2, &objects[3], false); // as a reader of a shared map may: the number is taken
    EXPECT_EQ(3, map->newReference(&objects[0]));
    EXPECT_EQ(3, map->getReference(&objects[0]));
}

TEST(ReferenceMap, FillsWhatWaitsAndReportsWhatStaysOpen) {
    qv::Reference<ioReferenceMap> const map(ioPacketFileNewReferenceMap());
    FunctionType wanting("wanting", {});
    FunctionType other("other", {});
    int object = 0;
    void * locations[6] = {&object, &object, &object, &object, &object, &object};
    map->resolve(0, &locations[0], &wanting, 1);
    map->resolve(7, &locations[1], &wanting, 2);
    map->resolve(7, &locations[2], &other, 3);
    map->resolve(7, nullptr, &other, 3);
    map->resolve(2000000000, &locations[3], &wanting, 4);
    map->resolve(9, &locations[4], &wanting, 5);
    map->resolve(9, &locations[5], &wanting, 6);
    EXPECT_THAT(locations, testing::Each(nullptr));

    static std::vector<int> reported;
    reported.clear();
    map->reportUnresolved(&wanting, [](void *, int value) { reported.push_back(value); });
    EXPECT_THAT(reported, testing::ElementsAre(2, 6, 5, 4));

    map->setDefinition(7, &object, false);
    EXPECT_EQ(nullptr, locations[1]);
    map->markDefined(7, &wanting);
    EXPECT_EQ(&object, locations[1]);
    EXPECT_EQ(&object, locations[2]);
    locations[1] = nullptr;
    map->resolve(7, &locations[1], &other, 1); // defined: filled at once
    EXPECT_EQ(&object, locations[1]);
    map->undefine(9);
    int unused = 0;
    map->setDefinition(20, &unused, false);
    map->markDefined(20, &other);

    Reader reader(writeFile(Form::ascii, {}, [](ioWriteContext &) {}), {});
    map->resolveRemaining(*reader.client);
    EXPECT_THAT(wanting.unresolved, testing::ElementsAre(std::pair<void *, int>(&locations[3], 4)));
    EXPECT_TRUE(other.unresolved.empty());
    EXPECT_THAT(other.unreferenced, testing::ElementsAre(&unused));
    EXPECT_TRUE(wanting.unreferenced.empty());
    EXPECT_EQ(nullptr, locations[4]);
}

// A type that defines what it is told is missing, while it is told.
TEST(ReferenceMap, CopesWithDefinitionsDuringTheReport) {
    struct Defining : ioPacketType {
        Defining() : ioPacketType("defining") {}
        void hasUnresolvedPointer(ioClientReadContext & client, void *, int) override {
            ++calls;
            client.getReadContext().defineReference(3, &object);
            for (int reference = 100; reference < 5000; ++reference) {
                client.getReadContext().useReference(reference);
            }
        }
        int calls = 0;
        int object = 0;
    } type;
    Reader reader(writeFile(Form::ascii, {}, [](ioWriteContext &) {}), {});
    void * locations[3];
    for (void *& location : locations) {
        reader.context->getReferenceMap()->resolve(3, &location, &type, 0);
    }
    reader.context->getReferenceMap()->resolveRemaining(*reader.client);
    EXPECT_EQ(1, type.calls);
    EXPECT_THAT(locations, testing::Each(&type.object));
}

TEST(PointerTable, AgreesWithAStandardMap) {
    std::mt19937_64 random(11);
    ioPointerTable table;
    std::map<void const *, int> model;
    for (int i = 1; i < 100000; ++i) {
        auto const address = random() % 3 == 0 ? random() | 1 : 0x7f0000000000 + 16 * (random() % 50000);
        auto const * const pointer = reinterpret_cast<void const *>(address);
        auto const found = model.find(pointer);
        ASSERT_EQ(found == model.end() ? 0 : found->second, table.find(pointer));
        table.set(pointer, i);
        model[pointer] = i;
        ASSERT_EQ(i, table.find(pointer));
    }
}
