#include "StatusReader.h"

#include "Base/Logic/qvPlgStringValue.h"

#include <istream>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace packages {

namespace {

using Paragraph = std::map<std::string, std::string, std::less<>>;

std::string_view trimmed(std::string_view text) {
    std::size_t const first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// Cuts the part in front of the next separator off the text.
std::string_view cut(std::string_view & text, char separator) {
    std::size_t const end = text.find(separator);
    std::string_view const part = trimmed(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return part;
}

// One paragraph; false at the end. A line that begins with a blank goes on with the field in front of it.
bool readParagraph(std::istream & stream, Paragraph & paragraph) {
    static constexpr std::string_view wanted[] = {"Package", "Status", "Version", "Section", "Depends", "Pre-Depends"};
    paragraph.clear();
    std::string * field = nullptr;
    bool isEmpty = true;
    for (std::string line; std::getline(stream, line);) {
        if (trimmed(line).empty()) {
            if (!isEmpty)
                return true;
            continue;
        }
        isEmpty = false;
        if (line[0] == ' ' || line[0] == '\t') {
            if (field)
                *field += line;
            continue;
        }
        field = nullptr;
        std::size_t const colon = line.find(':');
        for (std::string_view name : wanted) {
            if (colon == name.size() && line.compare(0, colon, name) == 0) {
                field = &paragraph[std::string(name)];
                *field = trimmed(std::string_view(line).substr(colon + 1));
            }
        }
    }
    return !isEmpty;
}

bool isInstalled(Paragraph & paragraph) {
    std::string const & status = paragraph["Status"];
    return !paragraph["Package"].empty() && (status.empty() || status.ends_with(" installed"));
}

// A name without the version in parentheses and the architecture behind a colon.
std::string_view nameOf(std::string_view dependency) {
    return trimmed(dependency.substr(0, dependency.find_first_of("(:[<| ")));
}

class Facts {
public:
    explicit Facts(qvPlg::Database & database) : database_(database) {}

    void add(char const * predicate, std::string_view first, std::string_view second) {
        database_.addFact(predicate, value(first), value(second));
    }

private:
    // The facts share one value for each text.
    qv::Reference<qvPlg::Value> value(std::string_view text) {
        auto const [place, isNew] = values_.try_emplace(std::string(text));
        if (isNew)
            place->second = new qvPlg::StringValue(text);
        return place->second;
    }

    qvPlg::Database & database_;
    std::map<std::string, qv::Reference<qvPlg::Value>> values_;
};

} // namespace

int readStatus(std::istream & stream, qvPlg::Database & database) {
    std::vector<Paragraph> installed;
    std::set<std::string, std::less<>> names;
    for (Paragraph paragraph; readParagraph(stream, paragraph);) {
        if (isInstalled(paragraph) && names.insert(paragraph["Package"]).second)
            installed.push_back(paragraph);
    }
    Facts facts(database);
    for (Paragraph & paragraph : installed) {
        std::string const & name = paragraph["Package"];
        facts.add("package", name, paragraph["Version"]);
        facts.add("section", name, paragraph["Section"]);
        std::string const all = paragraph["Depends"] + "," + paragraph["Pre-Depends"];
        for (std::string_view rest = all; !rest.empty();) {
            std::string_view alternatives = cut(rest, ',');
            std::string_view chosen = nameOf(alternatives);
            while (!alternatives.empty()) {
                std::string_view const other = nameOf(cut(alternatives, '|'));
                if (names.contains(other)) {
                    chosen = other;
                    break;
                }
            }
            if (chosen.empty())
                continue;
            facts.add("depends", name, chosen);
            facts.add("needed", chosen, name);
        }
    }
    return static_cast<int>(installed.size());
}

} // namespace packages
