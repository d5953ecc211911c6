#include "ccx/ccx_files.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>

#include "base/number_text.h"

namespace tremodal::ccx {

namespace {

std::vector<std::string_view> Lines(std::string_view text) {
    std::vector<std::string_view> lines;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t end = text.find('\n', at);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(at, end - at);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines.push_back(line);
        at = end + 1;
    }
    return lines;
}

// The words of a line, split at blanks.
std::vector<std::string_view> Words(std::string_view line) {
    std::vector<std::string_view> words;
    std::size_t at = 0;
    while (at < line.size()) {
        while (at < line.size() && (line[at] == ' ' || line[at] == '\t')) ++at;
        std::size_t end = at;
        while (end < line.size() && line[end] != ' ' && line[end] != '\t') ++end;
        if (end > at) words.push_back(line.substr(at, end - at));
        at = end;
    }
    return words;
}

// A finite number that is the whole word.
bool Number(std::string_view word, f64& value) {
    if (!word.empty() && word.front() == '+') word.remove_prefix(1);
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc() && end == word.data() + word.size() && std::isfinite(value);
}

bool Integer(std::string_view word, i32& value) {
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc() && end == word.data() + word.size();
}

// A row of numbers after `skip` leading words; false unless there are
// exactly `count` numbers.
template <std::size_t N>
bool NumberRow(const std::vector<std::string_view>& words, std::size_t skip, std::array<f64, N>& row) {
    if (words.size() != skip + N) return false;
    for (std::size_t k = 0; k < N; ++k) {
        if (!Number(words[skip + k], row[k])) return false;
    }
    return true;
}

std::string Upper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) c = char(std::toupper(static_cast<unsigned char>(c)));
    return upper;
}

[[noreturn]] void FailLine(const std::string& path, std::size_t line, const std::string& what) {
    Fail(kTypeMismatch, path + " line " + GeneralText(i32(line)) + ": " + what);
}

}  // namespace

Deck ReadDeck(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) Fail(kFileNotFound, path + ": no such file");
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Deck deck;
    std::string keyword;
    bool titleTaken = false;
    const std::vector<std::string_view> lines = Lines(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string_view line = lines[i];
        if (line.rfind("**", 0) == 0) continue;
        if (!line.empty() && line.front() == '*') {
            keyword = Upper(Trim(line.substr(0, line.find(','))));
            if (keyword == "*STEP") {
                FailLine(path, i + 1,
                         "\"" + std::string(line) +
                             "\": the deck must define the model only, with no *STEP; "
                             "tremodal-ccx adds the steps it needs");
            }
            if (keyword == "*INCLUDE") {
                FailLine(path, i + 1, "\"" + std::string(line) + "\": put the included lines into the deck");
            }
            continue;
        }
        if (keyword == "*HEADING" && !titleTaken) {
            deck.Title = Trim(line);
            titleTaken = true;
        }
        if (keyword != "*NODE" || Trim(line).empty()) continue;
        std::vector<std::string> fields;
        std::stringstream split{std::string(line)};
        for (std::string field; std::getline(split, field, ',');) fields.push_back(Trim(field));
        DeckNode node;
        f64 number = 0;
        if (!Number(fields[0], number) || number != std::floor(number) || number < 1 || number > kMaxNode) {
            FailLine(
                path, i + 1,
                "node \"" + fields[0] + "\": the suite numbers nodes from 1 to " + GeneralText(kMaxNode));
        }
        node.Number = i32(number);
        for (std::size_t k = 0; k < 3; ++k) {
            if (k + 1 < fields.size() && !fields[k + 1].empty() && !Number(fields[k + 1], node.At[k])) {
                FailLine(path, i + 1, "coordinate \"" + fields[k + 1] + "\" is not a number");
            }
        }
        deck.Nodes.push_back(node);
    }
    std::sort(deck.Nodes.begin(), deck.Nodes.end(),
              [](const DeckNode& a, const DeckNode& b) { return a.Number < b.Number; });
    // A node defined twice keeps its last coordinates, as in ccx.
    std::vector<DeckNode> unique;
    for (const DeckNode& node : deck.Nodes) {
        if (!unique.empty() && unique.back().Number == node.Number) unique.pop_back();
        unique.push_back(node);
    }
    deck.Nodes = std::move(unique);
    if (!deck.Nodes.empty()) deck.LastNode = deck.Nodes.back().Number;
    return deck;
}

std::string DeckNumber(f64 value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return std::string(text, end);
}

ModalTables ReadModalTables(std::string_view dat) {
    enum class Table { None, Eigenvalues, Participation, Effective, Total };
    ModalTables tables;
    Table table = Table::None;
    for (const std::string_view line : Lines(dat)) {
        if (line.find("E I G E N V A L U E   O U T P U T") != std::string_view::npos) {
            table = Table::Eigenvalues;
        } else if (line.find("P A R T I C I P A T I O N   F A C T O R S") != std::string_view::npos) {
            table = Table::Participation;
        } else if (line.find("E F F E C T I V E   M O D A L   M A S S") != std::string_view::npos) {
            table = Table::Effective;
        } else if (line.find("T O T A L   E F F E C T I V E   M A S S") != std::string_view::npos) {
            table = Table::Total;
        } else if (line.find("E I G E N V A L U E    N U M B E R") != std::string_view::npos ||
                   line.find("displacements") != std::string_view::npos) {
            table = Table::None;
        }
        const std::vector<std::string_view> words = Words(line);
        i32 mode = 0;
        std::array<f64, 6> row{};
        std::array<f64, 4> eigen{};
        const bool modeRow = !words.empty() && Integer(words[0], mode) && mode >= 1;
        switch (table) {
            case Table::Eigenvalues:
                if (modeRow && mode == i32(tables.Eigenvalues.size()) + 1 && NumberRow(words, 1, eigen))
                    tables.Eigenvalues.push_back(eigen[0]);
                break;
            case Table::Participation:
                if (modeRow && mode == i32(tables.Participation.size()) + 1 && NumberRow(words, 1, row))
                    tables.Participation.push_back(row);
                break;
            case Table::Effective:
                if (modeRow && mode == i32(tables.EffectiveMass.size()) + 1 && NumberRow(words, 1, row))
                    tables.EffectiveMass.push_back(row);
                break;
            case Table::Total:
                if (NumberRow(words, 0, row)) tables.TotalMass = row;
                break;
            case Table::None:
                break;
        }
    }
    return tables;
}

std::vector<NodeValues> ReadPrintedDisplacements(std::string_view dat) {
    std::vector<NodeValues> blocks;
    bool inBlock = false;
    for (const std::string_view line : Lines(dat)) {
        if (line.find("displacements (vx,vy,vz) for set") != std::string_view::npos) {
            blocks.emplace_back();
            inBlock = true;
            continue;
        }
        const std::vector<std::string_view> words = Words(line);
        if (!inBlock || words.empty()) continue;
        i32 node = 0;
        std::array<f64, 3> values{};
        if (Integer(words[0], node) && NumberRow(words, 1, values)) {
            blocks.back()[node] = values;
        } else {
            inBlock = false;
        }
    }
    return blocks;
}

// A DISP block: "-4  DISP" opens it, " -1" lines carry a node (10 columns)
// and its values (12 columns each), " -3" closes it.
std::vector<NodeValues> ReadFrdDisplacements(std::string_view frd) {
    std::vector<NodeValues> blocks;
    bool inBlock = false;
    for (const std::string_view line : Lines(frd)) {
        const std::string_view start = line.substr(0, std::min<std::size_t>(3, line.size()));
        if (start == " -4") {
            inBlock = Words(line).size() > 1 && Words(line)[1] == "DISP";
            if (inBlock) blocks.emplace_back();
            continue;
        }
        if (start == " -3") inBlock = false;
        if (!inBlock || start != " -1" || line.size() < 13 + 36) continue;
        i32 node = 0;
        std::array<f64, 3> values{};
        bool good = Integer(Trim(line.substr(3, 10)), node);
        for (std::size_t k = 0; k < 3 && good; ++k)
            good = Number(Trim(line.substr(13 + 12 * k, 12)), values[k]);
        if (good) blocks.back()[node] = values;
    }
    return blocks;
}

std::vector<Freedom> ReadDofList(std::string_view dof) {
    std::vector<Freedom> list;
    for (const std::string_view line : Lines(dof)) {
        const std::vector<std::string_view> words = Words(line);
        if (words.size() != 1) continue;
        const std::size_t dot = words[0].find('.');
        Freedom freedom;
        if (dot == std::string_view::npos || !Integer(words[0].substr(0, dot), freedom.Node) ||
            !Integer(words[0].substr(dot + 1), freedom.Number)) {
            freedom = Freedom{};
        }
        list.push_back(freedom);
    }
    return list;
}

std::vector<MatrixTerm> ReadMatrixTerms(std::string_view mas) {
    std::vector<MatrixTerm> terms;
    for (const std::string_view line : Lines(mas)) {
        const std::vector<std::string_view> words = Words(line);
        MatrixTerm term;
        if (words.size() == 3 && Integer(words[0], term.Row) && Integer(words[1], term.Column) &&
            Number(words[2], term.Value) && term.Row >= 1 && term.Column >= 1) {
            terms.push_back(term);
        }
    }
    return terms;
}

}  // namespace tremodal::ccx
