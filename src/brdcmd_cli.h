// brdcmd's pure parts: argument parsing, name resolution over the command table,
// the listing, and the interactive menu (driven through a runner callback).
#pragma once

#include <cstdio>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "function_MAP.h"

namespace brdcmd {

using Table = std::span<const FUNCTION_MAP_ENTRY>;

// The whole command table.
Table commandTable();

// Rows whose template starts with -1 never reach a pool: brdcmd neither runs nor lists them.
bool isRunnable(const FUNCTION_MAP_ENTRY& row);
// "GET" or "SET" from the name, else from the template's command byte; "-" when neither.
const char* commandKind(const FUNCTION_MAP_ENTRY& row);

enum class Match { Exact, Prefix, Substring, Ambiguous, Unknown };
struct Resolution {
    Match match = Match::Unknown;
    // The resolved row (one entry), or the candidates of an ambiguous name.
    std::vector<const FUNCTION_MAP_ENTRY*> rows;
};
// Resolves what the user typed to a runnable row, ignoring case: an exact full name
// wins, then a unique prefix, then a unique substring. Rows sharing one full name
// count once (the first in table order).
Resolution resolveName(const std::string& text, Table table);

// One line per runnable row containing `filter` (ignoring case; all rows when empty):
// name, group and GET/SET in aligned columns. A full name shared by rows shows once.
std::string formatList(const std::string& filter, Table table);

// The groups of the runnable rows in table order, each once; and the rows of one group.
std::vector<std::string> menuGroups(Table table);
std::vector<const FUNCTION_MAP_ENTRY*> groupRows(const std::string& group, Table table);

struct Options {
    enum Action { Menu, Run, List, Help, Version, UsageError } action = Menu;
    std::string name;    // Run: what the user typed
    std::string filter;  // List: the optional text
    std::string error;   // UsageError: what is wrong
};
Options parseArgs(const std::vector<std::string>& args);
std::string usageText();

// Exit statuses.
constexpr int EXIT_OK = 0;
constexpr int EXIT_COMMAND_FAILED = 1;
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_CONFIG = 3;

// The interactive menu: numbered groups, then the numbered commands of the chosen
// group; a chosen command is handed to `run` (which returns the handler's result) and
// the command list is shown again. "0" or "b" goes back to the groups, "q" or the end
// of `in` leaves. Returns EXIT_OK, or EXIT_COMMAND_FAILED when any command run from
// the menu failed (result below 1). Invalid choices are reported on `err`.
int runMenu(FILE* in, FILE* out, FILE* err, Table table,
            const std::function<int(const FUNCTION_MAP_ENTRY&)>& run);

}  // namespace brdcmd
