// qvpackage: makes package files, looks into them and takes them apart.

#include "Commands.h"
#include "Support/Names.h"

#include <charconv>
#include <clocale>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <string_view>

namespace {

constexpr char usage[] =
    "usage: qvpackage add [--compress] [--quiet] [--in-place] PACKAGE FILE-OR-DIRECTORY...\n"
    "       qvpackage list [--long] PACKAGE\n"
    "       qvpackage extract [--to DIR] [--limit BYTES] PACKAGE [NAME...]\n"
    "       qvpackage delete [--in-place] PACKAGE NAME...\n"
    "       qvpackage compact PACKAGE [NEW]\n"
    "       qvpackage check PACKAGE\n"
    "       qvpackage info PACKAGE\n"
    "       qvpackage --help | --version\n"
    "\n"
    "add      puts files and what lies in directories into a package, which is made when there is\n"
    "         none. Names are relative to the directory in which an argument lies, and an entry of\n"
    "         the same name is replaced. The work is done on a copy, so that an interruption leaves\n"
    "         the old package; --in-place works on the package itself. What a package cannot hold is\n"
    "         reported and left out: special files, empty directories, names that would change.\n"
    "list     names, with --long also stored size, date, and c for what is compressed. Control\n"
    "         characters in names, and bytes that are not UTF-8, show as \\xNN everywhere.\n"
    "extract  writes all entries, or those named, below DIR (default: here), with their dates.\n"
    "         Entries that would come out elsewhere are refused. With --limit no more than so many\n"
    "         bytes are written in all.\n"
    "delete   frees entries; their room is used by what is added later.\n"
    "compact  writes the package without free room, to NEW or in its own place.\n"
    "check    reads everything, strictly; nothing is printed when it is sound.\n"
    "info     sizes in bytes, entries, holes, and what compact would save.\n"
    "\n"
    "A -- ends the options. Exit status: 0 when all is well; 1 when something was left out, is\n"
    "missing or damaged; 2 when the package cannot be read or written, or the arguments make no\n"
    "sense.\n";

struct BadArguments : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The options and the other arguments of one command.
class Arguments {
public:
    Arguments(int argc, char ** argv) : all_(argv, argv + argc) {
        while (at_ < all_.size() && all_[at_].starts_with("--")) {
            options_.push_back(all_[at_++]);
            if (options_.back() == "--") {
                options_.pop_back();
                break;
            }
            if (takesValue(options_.back())) {
                if (at_ == all_.size())
                    throw BadArguments(options_.back() + " needs a value");
                values_.push_back(all_[at_++]);
            } else
                values_.emplace_back();
        }
    }

    bool take(std::string_view option) { return takeValue(option, nullptr); }
    bool takeValue(std::string_view option, std::string * value) {
        bool isGiven = false;
        for (std::size_t i = 0; i < options_.size();) {
            if (options_[i] != option) {
                ++i;
                continue;
            }
            if (value != nullptr)
                *value = values_[i];
            options_.erase(options_.begin() + static_cast<std::ptrdiff_t>(i));
            values_.erase(values_.begin() + static_cast<std::ptrdiff_t>(i));
            isGiven = true;
        }
        return isGiven;
    }
    // What is left, behind all options.
    std::vector<std::string> rest(std::size_t least, std::size_t most) const {
        if (!options_.empty())
            throw BadArguments("there is no option " + shown(options_.front()) + " here");
        std::vector<std::string> result(all_.begin() + static_cast<std::ptrdiff_t>(at_), all_.end());
        if (result.size() < least)
            throw BadArguments("an argument is missing");
        if (result.size() > most)
            throw BadArguments("there are too many arguments");
        return result;
    }

private:
    static bool takesValue(std::string_view option) { return option == "--to" || option == "--limit"; }

    std::vector<std::string> all_;
    std::size_t at_ = 0;
    std::vector<std::string> options_;
    std::vector<std::string> values_;
};

constexpr std::size_t anyNumber = SIZE_MAX;

std::int64_t bytesOf(std::string const & text) {
    std::int64_t bytes = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), bytes);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || bytes < 0)
        throw BadArguments(shown(text) + " is no number of bytes");
    return bytes;
}

// Splits the package off the other arguments.
std::string takePackage(std::vector<std::string> & rest) {
    std::string const package = rest.front();
    rest.erase(rest.begin());
    return package;
}

Status runAdd(Arguments arguments) {
    AddOptions options;
    options.compress = arguments.take("--compress");
    options.quiet = arguments.take("--quiet");
    options.how = arguments.take("--in-place") ? How::inPlace : How::onACopy;
    std::vector<std::string> rest = arguments.rest(2, anyNumber);
    std::string const package = takePackage(rest);
    return add(options, package, rest);
}

Status runList(Arguments arguments) {
    bool const isLong = arguments.take("--long");
    return list(isLong, arguments.rest(1, 1).front());
}

Status runExtract(Arguments arguments) {
    ExtractOptions options;
    std::string limit;
    arguments.takeValue("--to", &options.directory);
    if (arguments.takeValue("--limit", &limit))
        options.limit = bytesOf(limit);
    std::vector<std::string> rest = arguments.rest(1, anyNumber);
    std::string const package = takePackage(rest);
    return extract(options, package, rest);
}

Status runDelete(Arguments arguments) {
    How const how = arguments.take("--in-place") ? How::inPlace : How::onACopy;
    std::vector<std::string> rest = arguments.rest(2, anyNumber);
    std::string const package = takePackage(rest);
    return deleteEntries(how, package, rest);
}

Status runCompact(Arguments arguments) {
    std::vector<std::string> const rest = arguments.rest(1, 2);
    return compact(rest.front(), rest.back());
}

Status runCheck(Arguments arguments) { return check(arguments.rest(1, 1).front()); }

Status runInfo(Arguments arguments) { return info(arguments.rest(1, 1).front()); }

Status print(char const * text) {
    std::fputs(text, stdout);
    return std::fflush(stdout) == 0 ? allWell : unusable;
}

struct Command {
    std::string_view name;
    Status (*run)(Arguments);
};
constexpr Command commands[] = {{"add", runAdd},       {"list", runList},   {"extract", runExtract},
                                {"delete", runDelete}, {"check", runCheck}, {"compact", runCompact},
                                {"info", runInfo}};

} // namespace

void complain(std::string const & text) { std::fprintf(stderr, "qvpackage: %s\n", text.c_str()); }

void complain(qvUtil::Error const & error) {
    // Some texts end with a newline of their own.
    qvString::IString text = qvString::IString(error.message());
    text.rstrip(L'\n');
    complain(shown(text));
}

int main(int argc, char ** argv) {
    // What the library says of names comes in the multibyte encoding, and names are shown in UTF-8.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::string_view const first = argc > 1 ? argv[1] : "";
    if (first == "--help" || first == "--version")
        return print(first == "--help" ? usage : "qvpackage " QVPACKAGE_VERSION "\n");
    try {
        for (Command const & command : commands) {
            if (first != command.name)
                continue;
            Arguments arguments(argc - 2, argv + 2);
            return arguments.take("--help") ? print(usage) : command.run(std::move(arguments));
        }
    } catch (BadArguments const & bad) {
        complain(bad.what());
    } catch (std::bad_alloc const &) {
        complain("there is not enough memory");
        return unusable;
    }
    std::fputs(usage, stderr);
    return unusable;
}
