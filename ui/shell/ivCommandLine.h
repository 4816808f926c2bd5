#pragma once
#include <string>
#include <string_view>
#include <vector>

// What the program's command line asks for: the file to open (the last path given wins) and
// the "scan" option, which is accepted and changes nothing.
struct ivCommandLine {
    std::string path;
    bool scan = false;
};

// Splits a whole command line as one string into tokens: blanks and tabs separate them; a
// token that begins with a double quote runs to the next one (dropped) or to the end, so
// "" gives an empty token. The program's own path is the first token.
std::vector<std::string> SplitCommandLine(std::string_view line);

// Reads the tokens after the program's own path. A token of 1024 or more characters, or an
// empty one, ends the reading. A token that begins with "-" (or "/" when `slashOptions`, as
// on Windows) is an option; only "scan" is known, in any case, and others are ignored. On
// other systems "/" begins an absolute path, and only "/scan" itself counts as the option.
ivCommandLine ScanCommandLine(const std::vector<std::string>& tokens, bool slashOptions);
