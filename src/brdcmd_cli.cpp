// brdcmd's pure parts: argument parsing, name resolution, the listing and the menu.
#include "brdcmd_cli.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "launch.h"

namespace brdcmd {

namespace {

std::string upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

bool contains(const std::string& haystack, const std::string& needle) {
    return haystack.find(needle) != std::string::npos;
}

// Adds `row` unless a row of the same full name is already there.
void addDistinct(std::vector<const FUNCTION_MAP_ENTRY*>* rows, const FUNCTION_MAP_ENTRY* row) {
    for (const FUNCTION_MAP_ENTRY* r : *rows)
        if (strcmp(r->name, row->name) == 0) return;
    rows->push_back(row);
}

std::string trim(const std::string& s) {
    size_t b = s.find_first_not_of(" \t\r\n");
    if (b == std::string::npos) return "";
    size_t e = s.find_last_not_of(" \t\r\n");
    return s.substr(b, e - b + 1);
}

// Reads one whole line; false at the end of input.
bool readLine(FILE* in, std::string* line) {
    char* buf = nullptr;
    size_t cap = 0;
    ssize_t n = getline(&buf, &cap, in);
    if (n >= 0) line->assign(buf, static_cast<size_t>(n));
    free(buf);
    return n >= 0;
}

// A choice number in [1, max], or 0 when the text is not one.
size_t choiceNumber(const std::string& text, size_t max) {
    if (text.empty() || text.size() > 9) return 0;
    size_t v = 0;
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return 0;
        v = v * 10 + static_cast<size_t>(c - '0');
    }
    return v <= max ? v : 0;
}

}  // namespace

Table commandTable() {
    return Table(function_map, function_map_count);
}

bool isRunnable(const FUNCTION_MAP_ENTRY& row) {
    // A row without a request still runs when a handler of its own does the work (CAN
    // device select, series and real-time rows).
    return row.cmd[0] != -1 || (row.func != nullptr && row.func != FUNC_GENERIC &&
                                row.func != FUNC_RESERVED && row.func != FUNC_EXIT);
}

const char* commandKind(const FUNCTION_MAP_ENTRY& row) {
    if (strstr(row.name, "_GET_") != nullptr) return "GET";
    if (strstr(row.name, "_SET_") != nullptr) return "SET";
    // System-MCU templates are device, command (2 GET, 3 SET), address; raw-byte rows
    // (FM frames from 0xF1, ASCII text) start with values no device code takes.
    if (row.cmd[0] >= 0 && row.cmd[0] < 0x20 && row.cmd[1] == 2) return "GET";
    if (row.cmd[0] >= 0 && row.cmd[0] < 0x20 && row.cmd[1] == 3) return "SET";
    return "-";
}

Resolution resolveName(const std::string& text, Table table) {
    Resolution res;
    for (const FUNCTION_MAP_ENTRY& row : table) {
        if (isRunnable(row) && text == row.name) {
            res.match = Match::Exact;
            res.rows = {&row};
            return res;
        }
    }
    const std::string want = upper(text);
    std::vector<const FUNCTION_MAP_ENTRY*> exact, prefix, substring;
    for (const FUNCTION_MAP_ENTRY& row : table) {
        if (!isRunnable(row)) continue;
        const std::string name = upper(row.name);
        size_t at = name.find(want);
        if (at == std::string::npos) continue;
        if (name == want) addDistinct(&exact, &row);
        if (at == 0) addDistinct(&prefix, &row);
        addDistinct(&substring, &row);
    }
    for (auto [rows, match] : {std::pair{&exact, Match::Exact}, std::pair{&prefix, Match::Prefix},
                               std::pair{&substring, Match::Substring}}) {
        if (rows->empty()) continue;
        res.match = rows->size() == 1 ? match : Match::Ambiguous;
        res.rows = *rows;
        return res;
    }
    return res;
}

std::string formatList(const std::string& filter, Table table) {
    const std::string want = upper(filter);
    std::vector<const FUNCTION_MAP_ENTRY*> rows;
    size_t nameWidth = 0, groupWidth = 0;
    for (const FUNCTION_MAP_ENTRY& row : table) {
        if (!isRunnable(row) || !contains(upper(row.name), want)) continue;
        addDistinct(&rows, &row);
        nameWidth = std::max(nameWidth, strlen(row.name));
        groupWidth = std::max(groupWidth, strlen(functionGroup(row.name)));
    }
    std::string out;
    for (const FUNCTION_MAP_ENTRY* row : rows) {
        std::string name = row->name, group = functionGroup(row->name);
        out += name + std::string(nameWidth - name.size() + 2, ' ');
        out += group + std::string(groupWidth - group.size() + 2, ' ');
        out += commandKind(*row);
        out += '\n';
    }
    return out;
}

std::vector<std::string> menuGroups(Table table) {
    std::vector<std::string> groups;
    for (const FUNCTION_MAP_ENTRY& row : table) {
        if (!isRunnable(row)) continue;
        std::string g = functionGroup(row.name);
        if (std::find(groups.begin(), groups.end(), g) == groups.end()) groups.push_back(g);
    }
    return groups;
}

std::vector<const FUNCTION_MAP_ENTRY*> groupRows(const std::string& group, Table table) {
    std::vector<const FUNCTION_MAP_ENTRY*> rows;
    for (const FUNCTION_MAP_ENTRY& row : table)
        if (isRunnable(row) && group == functionGroup(row.name)) addDistinct(&rows, &row);
    return rows;
}

Options parseArgs(const std::vector<std::string>& args) {
    Options o;
    auto usage = [&o](std::string what) {
        o.action = Options::UsageError;
        o.error = std::move(what);
        return o;
    };
    if (args.empty()) return o;
    const std::string& first = args[0];
    if (first == "--help" || first == "-h") {
        o.action = Options::Help;
        if (args.size() > 1) return usage("--help takes no argument");
    } else if (first == "--version" || first == "-V") {
        o.action = Options::Version;
        if (args.size() > 1) return usage("--version takes no argument");
    } else if (first == "--list" || first == "-l") {
        o.action = Options::List;
        if (args.size() > 2) return usage("--list takes at most one text");
        if (args.size() == 2) o.filter = args[1];
    } else if (first.size() > 1 && first[0] == '-') {
        return usage("unknown option '" + first + "'");
    } else {
        o.action = Options::Run;
        o.name = first;
        if (first.empty()) return usage("empty command name");
        if (args.size() > 1) return usage("unexpected argument '" + args[1] + "'");
    }
    return o;
}

std::string usageText() {
    return "Usage: brdcmd [NAME | --list [TEXT] | --help | --version]\n"
           "Runs the handler of one command of the board's controllers.\n"
           "\n"
           "  NAME           the command's full name, or a unique prefix or part of it\n"
           "                 (case is ignored; an ambiguous name lists the candidates)\n"
           "  -l, --list [TEXT]\n"
           "                 lists the commands (name, group, GET/SET), those containing TEXT\n"
           "  -h, --help     prints this text\n"
           "  -V, --version  prints the program's and the link library's versions\n"
           "\n"
           "Without NAME brdcmd opens a menu on standard input: choose a group, then a\n"
           "command; 0 or b goes back, q or the end of input leaves.\n"
           "\n"
           "Exit status: 0 the command succeeded, 1 it failed (link, MCU or input ended),\n"
           "2 usage error or unknown name, 3 configuration or device error.\n";
}

int runMenu(FILE* in, FILE* out, FILE* err, Table table,
            const std::function<int(const FUNCTION_MAP_ENTRY&)>& run) {
    const std::vector<std::string> groups = menuGroups(table);
    int status = EXIT_OK;
    std::string line;
    for (;;) {
        fprintf(out, "%s\n", RULE56);
        for (size_t i = 0; i < groups.size(); ++i)
            fprintf(out, "%3zu. %s\n", i + 1, groups[i].c_str());
        fprintf(out, "  q. Quit\n%s\nSelect a group: ", RULE56);
        fflush(out);
        if (!readLine(in, &line)) return status;
        const std::string choice = trim(line);
        if (choice == "q" || choice == "Q") return status;
        size_t g = choiceNumber(choice, groups.size());
        if (g == 0) {
            fprintf(err, "%s: invalid choice '%s': enter 1 to %zu, or q\n", g_progName,
                    choice.c_str(), groups.size());
            continue;
        }
        const std::vector<const FUNCTION_MAP_ENTRY*> rows = groupRows(groups[g - 1], table);
        for (bool back = false; !back;) {
            fprintf(out, "%s\n%s\n", RULE56, groups[g - 1].c_str());
            for (size_t i = 0; i < rows.size(); ++i)
                fprintf(out, "%3zu. %s\n", i + 1, rows[i]->name);
            fprintf(out, "  0. Back\n  q. Quit\n%s\nSelect a command: ", RULE56);
            fflush(out);
            if (!readLine(in, &line)) return status;
            const std::string pick = trim(line);
            if (pick == "q" || pick == "Q") return status;
            if (pick == "0" || pick == "b" || pick == "B") {
                back = true;
                continue;
            }
            size_t c = choiceNumber(pick, rows.size());
            if (c == 0) {
                fprintf(err, "%s: invalid choice '%s': enter 1 to %zu, 0 or q\n", g_progName,
                        pick.c_str(), rows.size());
                continue;
            }
            fputc('\n', out);
            fflush(out);
            if (run(*rows[c - 1]) < 1) status = EXIT_COMMAND_FAILED;
            fputc('\n', out);
            fflush(out);
        }
    }
}

}  // namespace brdcmd
