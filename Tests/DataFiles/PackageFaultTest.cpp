// Every system call of changes to a package fails once, or that and all behind it, or the process ends there.

#include "Base/DataFiles/ioPackageFile.h"

#include "Support/ErrorMatchers.h"
#include "Support/FailingSystem.h"
#include "Support/ScratchDirectory.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>

namespace {

namespace fs = std::filesystem;
using qvTest::bytesOf;
using qvTest::FailingSystem;
using qvTest::FailsWith;
using qvTest::FaultLasts;
using qvTest::Succeeds;
using qvTest::SystemFault;
using qvTest::wide;
using qvTest::writeBytes;
using qvUtil::Error;

using Contents = std::map<std::string, std::string>;

class PackageFaults : public testing::Test {
protected:
    PackageFaults() {
        fs::create_directory(path("tmp"));
        setenv("TMPDIR", path("tmp").c_str(), 1);
        for (auto const & [name, text] : sources_)
            writeBytes(path(name), text);
        ioPackageFile package;
        EXPECT_THAT(package.open(wide(path("p"))), Succeeds());
        EXPECT_THAT(package.addEntry(wide(path("one")), wide("a"), false), Succeeds());
        EXPECT_THAT(package.addEntry(wide(path("two")), wide("b"), true), Succeeds());
        EXPECT_THAT(package.update(), Succeeds());
        package.close();
        original_ = bytesOf(path("p"));
    }
    ~PackageFaults() override { unsetenv("TMPDIR"); }

    std::string path(std::string const & name) const { return scratch_.path(name); }
    void reset() const {
        writeBytes(path("p"), original_);
        fs::remove(path("q"));
        for (auto const & left : fs::directory_iterator(path("tmp")))
            fs::remove(left);
    }

    // What an application that reads the package finds; nothing when it is none.
    std::optional<Contents> read(std::string const & name) const {
        ioPackageFile package;
        if (!fs::exists(path(name)) || package.open(wide(path(name))))
            return std::nullopt;
        EXPECT_EQ(package.validate(), nullptr);
        Contents contents;
        for (auto const & [entry, index] : package.getDirectory()) {
            fs::remove(path("out"));
            EXPECT_THAT(package.extractEntry(package.getEntry(index), wide(path("out"))), Succeeds());
            contents[entry.asUTF8()] = bytesOf(path("out"));
        }
        return contents;
    }

    // Opens the package and changes it in a process that ends in front of its n-th system call; false when it came to
    // its end.
    bool endsAt(int n, std::function<bool(ioPackageFile &)> const & change) const {
        return qvTest::endsAt(n, [&] {
            ioPackageFile package;
            return !package.open(wide(path("p"))) && change(package);
        });
    }

    std::string const small_ = std::string(3000, 's');
    std::string const large_ = std::string(400000, 'l');
    Contents const sources_ = {{"one", std::string(9000, '1')}, {"two", small_}, {"three", large_}};
    std::string original_;
    qvTest::ScratchDirectory scratch_;
};

TEST_F(PackageFaults, LeaveATableThatTheObjectCanGoOnWith) {
    int const descriptors = qvTest::numOpenDescriptors();
    int faults = 0;
    auto const change = [&](ioPackageFile & package, bool afterFaults) {
        int failures = 0;
        failures += package.addEntry(wide(path("three")), wide("c"), false).num() != 0;
        failures += package.addEntry(wide(path("two")), wide("a"), true).num() != 0; // replaced
        failures += package.deleteEntry(wide("b")).num() != 0 && !afterFaults;       // may have gone before
        failures += package.addEntry(wide(path("one")), wide("d"), true).num() != 0;
        failures += package.update().num() != 0;
        return failures;
    };
    Contents const expected = {{"a", small_}, {"c", large_}, {"d", sources_.at("one")}};
    for (SystemFault const fault : {SystemFault::diskFull, SystemFault::inputOutput, SystemFault::denied,
                                    SystemFault::interrupted, SystemFault::shortTransfer})
        for (FaultLasts const lasts : {FaultLasts::once, FaultLasts::fromThenOn})
            for (int n = 0;; ++n) {
                SCOPED_TRACE(testing::Message() << int(fault) << ' ' << int(lasts) << ' ' << n);
                reset();
                bool struck = false;
                {
                    ioPackageFile package;
                    ASSERT_THAT(package.open(wide(path("p"))), Succeeds());
                    int failures = 0;
                    {
                        FailingSystem const failing(fault, lasts, n);
                        failures = change(package, false);
                        struck = FailingSystem::struck();
                    }
                    ASSERT_EQ(package.validate(), nullptr);
                    bool const isHarmless = fault == SystemFault::interrupted || fault == SystemFault::shortTransfer;
                    ASSERT_TRUE(failures == 0 || (struck && !isHarmless));
                    if (failures > 0) {
                        ASSERT_EQ(change(package, true), 0);
                    }
                }
                ASSERT_TRUE(read("p") == expected);
                ASSERT_EQ(qvTest::numOpenDescriptors(), descriptors);
                ASSERT_TRUE(fs::is_empty(path("tmp")) || fault < SystemFault::interrupted);
                if (!struck)
                    break;
                ++faults;
            }
    RecordProperty("faults", faults);
    EXPECT_GT(faults, 300);
}

// A large file is packed into a temporary one, which may find no room.
TEST_F(PackageFaults, WhilePackingAreToldFromThoseOfTheSource) {
    writeBytes(path("large"), std::string(3 << 20, 'x'));
    std::map<int, int> numbers;
    for (int n = 0;; ++n) {
        bool struck = false;
        Error error;
        {
            FailingSystem const failing(SystemFault::diskFull, FaultLasts::fromThenOn, n);
            ioPackageFileSource source;
            error = source.prepare(wide(path("large")), true);
            struck = FailingSystem::struck();
        }
        ++numbers[error.num()];
        if (error.num() == 10) {
            EXPECT_THAT(error, FailsWith(10, "Error compressing file: " + path("large")));
        }
        reset();
        if (!struck)
            break;
    }
    EXPECT_GT(numbers[10], 3);
    EXPECT_GE(numbers[0], 1);
    EXPECT_EQ(numbers[8], 0);
}

TEST_F(PackageFaults, ThatEndTheProcessLeaveWhatIsTold) {
    Contents const before = {{"a", sources_.at("one")}, {"b", small_}};
    Contents after = before;
    after["c"] = large_;
    // Appending: the old directory is overwritten, so there is the old package, or none, or the new one.
    int states[3] = {0, 0, 0};
    for (int n = 0;; ++n) {
        reset();
        bool const ended = endsAt(n, [&](ioPackageFile & package) {
            return !package.addEntry(wide(path("three")), wide("c"), false) && !package.update();
        });
        std::optional<Contents> const found = read("p");
        int const state = !found.has_value() ? 1 : *found == before ? 0 : 2;
        ASSERT_TRUE(state != 2 || *found == after) << n;
        ASSERT_TRUE(states[2] == 0 || state == 2) << n; // once it is there it stays
        ++states[state];
        if (!ended) {
            ASSERT_EQ(state, 2);
            break;
        }
    }
    EXPECT_TRUE(states[0] > 3 && states[1] > 3 && states[2] > 1);
    // A deletion is nothing before update(), and one write there.
    Contents const without = {{"a", sources_.at("one")}};
    for (int n = 0;; ++n) {
        reset();
        bool const ended =
            endsAt(n, [](ioPackageFile & package) { return !package.deleteEntry(wide("b")) && !package.update(); });
        std::optional<Contents> const found = read("p");
        ASSERT_TRUE(found == before || found == without) << n;
        if (!ended)
            break;
    }
    // What goes into a hole that the directory on disk knows leaves the package as it was, until update() is at work.
    // Into one of this run: the old name then has any bytes.
    for (bool const isOfThisRun : {false, true}) {
        std::string const filler(9000, 'f');
        writeBytes(path("four"), filler);
        for (int n = 0;; ++n) {
            reset();
            if (!isOfThisRun) {
                ioPackageFile package;
                ASSERT_TRUE(!package.open(wide(path("p"))) && !package.deleteEntry(wide("a")) && !package.update());
            }
            bool const ended = endsAt(n, [&](ioPackageFile & package) {
                return (!isOfThisRun || !package.deleteEntry(wide("a"))) &&
                       !package.addEntry(wide(path("four")), wide("h"), false) && !package.update();
            });
            std::optional<Contents> const found = read("p");
            if (!ended) {
                ASSERT_TRUE((found == Contents{{"b", small_}, {"h", filler}}));
                break;
            }
            if (!found.has_value() || found->contains("h"))
                continue; // in update()
            ASSERT_EQ(found->at("b"), small_) << n;
            ASSERT_EQ(found->contains("a"), isOfThisRun) << n;
            if (isOfThisRun) {
                ASSERT_EQ(found->at("a").size(), filler.size()) << n;
            }
        }
    }
    // A compact copy leaves the package alone, and is no package before its end.
    for (int n = 0;; ++n) {
        reset();
        bool const ended = endsAt(n, [&](ioPackageFile & package) { return !package.write(wide(path("q"))); });
        ASSERT_EQ(bytesOf(path("p")), original_) << n;
        std::optional<Contents> const found = read("q");
        ASSERT_TRUE(!found.has_value() || *found == before) << n;
        if (!ended) {
            ASSERT_TRUE(found.has_value());
            break;
        }
    }
}

} // namespace
