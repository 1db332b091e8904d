// qvcatalog: reads catalogs of texts and says where they are faulty.

#include "Support/Names.h"
#include "Support/ProgressBar.h"

#include "Base/OS/qvOSFilename.h"
#include "Base/Strings/qvStringTableManager.h"
#include "Base/Strings/qvStringTableStringTable.h"
#include "Base/Utility/qvUtilProgress.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr char usage[] =
    "usage: qvcatalog check FILE...\n"
    "       qvcatalog --help | --version\n"
    "\n"
    "check    reads catalogs of texts. For one that is faulty it prints the fault at which reading\n"
    "         ends, as FILE:LINE: what is wrong: the entry; then it goes on with the next file.\n"
    "         Control characters show as \\xNN. Nothing is printed for what is sound.\n"
    "\n"
    "A -- ends the options. Exit status: 0 when all is well; 1 when a catalog is faulty; 2 when a file\n"
    "cannot be read, or the arguments make no sense.\n";

enum Status { allWell = 0, faulty = 1, unusable = 2 };

constexpr int parsingFault = 3;
constexpr int conversionFault = 5;

void complain(std::string const & text) { std::fprintf(stderr, "qvcatalog: %s\n", shown(text).c_str()); }

std::string withoutNewlines(std::string text) {
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

// Takes "String file ... error encountered, line 7, file NAME: \nWHAT: ENTRY\n" apart. Anything may stand in a name, so
// that is skipped by its length.
std::string faultOf(std::string const & message, qvString::IString const & name) {
    static constexpr std::string_view beforeLine = "encountered, line ";
    static constexpr std::string_view beforeName = ", file ";
    static constexpr std::string_view behindName = ": \n";
    std::size_t const line = message.find(beforeLine) + beforeLine.size();
    std::size_t const comma = message.find(beforeName, line);
    std::size_t const nameLength = std::strlen(name.asMultibyte());
    std::size_t const text = comma + beforeName.size() + nameLength + behindName.size();
    return message.substr(line, comma - line) + ": " + withoutNewlines(message.substr(text));
}

// What became of a catalog, and what there is to say about it.
struct Outcome {
    Status status;
    std::string text;
};

Outcome checkOne(char const * file) {
    qvStringTable::appStringTable().clear();
    qvOS::Filename const name(nameOf(file));
    qvUtil::Error const error = qvStringTable::Manager::loadCatalog(name);
    if (!error)
        return {allWell, ""};
    if (error.num() != parsingFault && error.num() != conversionFault)
        return {unusable, withoutNewlines(error.message())};
    return {faulty, std::string(file) + ":" + faultOf(error.message(), name.name())};
}

int check(std::vector<char const *> const & files) {
    qvUtil::Progress progress;
    ProgressBar bar(ProgressBar::Use::whereATerminalIs, progress);
    int worst = allWell;
    for (std::size_t i = 0; i < files.size(); ++i) {
        char const * const file = files[i];
        progress.setCaption(shown(std::string(file)).c_str());
        Outcome outcome = {unusable, ""};
        try {
            outcome = checkOne(file);
        } catch (std::bad_alloc const &) {
            outcome.text = std::string(file) + ": there is not enough memory";
        } catch (std::length_error const &) {
            outcome.text = std::string(file) + ": an entry is too long";
        }
        if (outcome.status != allWell)
            bar.clear();
        if (outcome.status == faulty)
            std::printf("%s\n", shown(outcome.text).c_str());
        else if (outcome.status == unusable)
            complain(outcome.text);
        worst = std::max<int>(worst, outcome.status);
        progress.set(static_cast<double>(i + 1) / static_cast<double>(files.size()));
    }
    bar.clear();
    if (std::fflush(stdout) == 0)
        return worst;
    complain("the output cannot be written");
    return unusable;
}

} // namespace

int main(int argc, char ** argv) {
    // What the library says comes in the multibyte encoding, and is shown in UTF-8.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::string_view const first = argc > 1 ? argv[1] : "";
    if (first == "--help" || first == "--version") {
        std::fputs(first == "--help" ? usage : "qvcatalog " QVCATALOG_VERSION "\n", stdout);
        return std::fflush(stdout) == 0 ? allWell : unusable;
    }
    std::vector<char const *> files(argv + (argc > 2 ? 2 : argc), argv + argc);
    bool const isEnded = !files.empty() && std::strcmp(files.front(), "--") == 0;
    if (isEnded)
        files.erase(files.begin());
    bool const isOption = !isEnded && !files.empty() && files.front()[0] == '-' && files.front()[1] != '\0';
    if (first == "check" && !files.empty() && !isOption)
        return check(files);
    if (isOption)
        complain("there is no option " + std::string(files.front()) + " here");
    std::fputs(usage, stderr);
    return unusable;
}
