// qvpacket: looks into packet files and checks them.

#include "Commands.h"
#include "Fault.h"
#include "Support/Names.h"
#include "Support/ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

enum Status { sound = 0, damaged = 1, unusable = 2 };

constexpr char usage[] =
    "usage: qvpacket show FILE...   the form of the file and its packets by type\n"
    "       qvpacket check FILE...  read all of it, strictly; nothing is printed when it is sound\n"
    "       qvpacket dump FILE...   everything that is in it\n"
    "       qvpacket --help | --version\n"
    "\n"
    "Exit status: 0 when all is well, 1 when a file is damaged or no packet file, 2 when a file\n"
    "cannot be read, the output cannot be written, or the arguments make no sense.\n";

struct CloseFile {
    void operator()(std::FILE * file) const { std::fclose(file); }
};

std::optional<std::string> contentsOf(char const * name) {
    std::unique_ptr<std::FILE, CloseFile> const file(std::fopen(name, "rb"));
    if (!file) {
        return std::nullopt;
    }
    std::string contents;
    static char piece[1 << 16];
    while (std::size_t const got = std::fread(piece, 1, sizeof piece, file.get())) {
        contents.append(piece, got);
    }
    if (std::ferror(file.get())) {
        return std::nullopt;
    }
    return contents;
}

enum class Command { show, check, dump };

std::optional<Command> commandNamed(std::string_view name) {
    if (name == "show") {
        return Command::show;
    }
    if (name == "check") {
        return Command::check;
    }
    if (name == "dump") {
        return Command::dump;
    }
    return std::nullopt;
}

void run(Command command, std::string_view contents, Output & output, char const * name) {
    qvUtil::Progress progress;
    progress.setCaption(shown(std::string(name)).c_str());
    // Not between lines of output.
    bool const isApart = command == Command::check || ::isatty(STDOUT_FILENO) != 1;
    ProgressBar const bar(isApart ? ProgressBar::Use::whereATerminalIs : ProgressBar::Use::never, progress);
    PacketFile file(contents, progress);
    switch (command) {
    case Command::show:
        show(file, output);
        break;
    case Command::check:
        check(file);
        break;
    case Command::dump:
        dump(file, output);
        break;
    }
}

Status runOn(Command command, char const * name, Output & output) {
    try {
        std::optional<std::string> const contents = contentsOf(name);
        if (!contents) {
            std::fprintf(stderr, "%s: cannot be read\n", name);
            return unusable;
        }
        run(command, *contents, output, name);
        return sound;
    } catch (Fault const & fault) {
        output.flush();
        std::fprintf(stderr, "%s: offset %zu: %s\n", name, fault.offset, fault.reason.c_str());
        return damaged;
    } catch (std::bad_alloc const &) {
        std::fprintf(stderr, "%s: too large for the memory\n", name);
        return unusable;
    }
}

Status runOnAll(Command command, char ** names, Output & output) {
    Status worst = sound;
    bool const several = names[1] != nullptr && command != Command::check;
    for (; *names; ++names) {
        if (several) {
            output << "== " << *names << "\n";
        }
        worst = std::max(worst, runOn(command, *names, output));
    }
    return worst;
}

} // namespace

int main(int argc, char ** argv) {
    Output output;
    Status status = sound;
    std::string_view const first = argc > 1 ? argv[1] : "";
    if (first == "--help") {
        output << usage;
    } else if (first == "--version") {
        output << "qvpacket " QVPACKET_VERSION "\n";
    } else if (std::optional<Command> const command = commandNamed(first); command && argc > 2) {
        status = runOnAll(*command, argv + 2, output);
    } else {
        std::fputs(usage, stderr);
        return unusable;
    }
    if (!output.flush()) {
        std::fputs("qvpacket: the output cannot be written\n", stderr);
        return unusable;
    }
    return status;
}
