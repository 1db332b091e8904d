// The program qvcatalog, on sound and faulty catalogs.

#include "Support/RunProgram.h"

#include <gtest/gtest.h>

#include <string>

using namespace qvTest;

namespace {

class QvCatalog : public testing::Test {
protected:
    Outcome run(std::string const & arguments) const { return runProgram(scratch_, QVCATALOG_PROGRAM, arguments); }
    void put(std::string const & name, std::string const & bytes) const { writeBytes(scratch_.path(name), bytes); }

    ScratchDirectory scratch_;
};

TEST_F(QvCatalog, EachFileEndsAtItsFirstFault) {
    put("sound", "a.b = \"x\"\n");
    put("format", "\na.b\n= \"\"\n");
    put("key, file", "a.b = \"x\" \\\n\n a = : \n");
    put("\xC3\xA9\x1B", "// \xFF\xC2\x9B\n");
    put("\xFE: \ny", "x"); // what a message says about a file goes on behind the name
    std::string const faults =
        "format:2: Expected idToken = \"quoted value string\" format: a.b\n"
        "key, file:3: Expected quotes surrounding value string. Illegal character(s) encountered at start or end "
        "of string: a.b = \"x\" a = :\n"
        "\xC3\xA9\\x1B:1: Error interpreting input as UTF-8: // \xEF\xBF\xBD\\x9B\n"
        "\\xFE: \\x0Ay:1: Expected idToken = \"quoted value string\" format: x\n";
    EXPECT_EQ(run("check sound format 'key, file' $(printf '\\303\\251\\033') \"$(printf '\\376: \\ny')\" sound"),
              (Outcome{1, faults, ""}));
    EXPECT_EQ(run("check -- sound sound"), (Outcome{0, "", ""}));
}

TEST_F(QvCatalog, WhatCannotBeReadIsWorse) {
    put("faulty", "x");
    EXPECT_EQ(run("check missing faulty ."),
              (Outcome{2, "faulty:1: Expected idToken = \"quoted value string\" format: x\n",
                       "qvcatalog: Can't open catalog file missing for read: No such file or directory\n"
                       "qvcatalog: Error reading file .: Is a directory\n"}));
    EXPECT_EQ(run("check faulty > /dev/full").status, 2);
    Outcome const bad = run("check --quiet faulty");
    EXPECT_EQ(bad.status, 2);
    EXPECT_EQ(bad.err.find("qvcatalog: there is no option --quiet here\nusage: qvcatalog check"), 0U) << bad.err;
    for (char const * arguments : {"", "check", "chekc faulty", "check --"})
        EXPECT_EQ(run(arguments).status, 2) << arguments;
    EXPECT_EQ(run("--help").status, 0);
}

} // namespace
