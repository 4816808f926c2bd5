#include "cli/cliPasswordPrompt.h"

#include <cstdio>
#include <iostream>
#include <mutex>

#include "platform/ivFormat.h"

#ifndef _WIN32
#include <termios.h>
#include <unistd.h>
#endif

namespace {

// Files analysed at once share the terminal: one prompt at a time.
std::mutex g_terminal;

bool ReadHiddenLine(std::string& line) {
#ifndef _WIN32
    termios saved{};
    const bool tty = tcgetattr(STDIN_FILENO, &saved) == 0;
    if (tty) {
        termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    const bool ok = static_cast<bool>(std::getline(std::cin, line));
    if (tty) tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    std::fputs("\n", stderr);
    return ok;
#else
    return static_cast<bool>(std::getline(std::cin, line));
#endif
}

bool StandardInputIsTerminal() {
#ifndef _WIN32
    return isatty(STDIN_FILENO) != 0;
#else
    return false;
#endif
}

}  // namespace

bool cliPasswordPrompt::AskPassword(const std::string& fileName, std::string& password) {
    if (m_password) {
        if (m_given) return false;  // one attempt only
        m_given = true;
        password = *m_password;
        return true;
    }
    if (!StandardInputIsTerminal()) return false;
    std::lock_guard lock(g_terminal);
    std::string prompt =
        ivFormat("'%s' is protected. Please enter a Document Open Password.", fileName.c_str());
    std::fprintf(stderr, "%s\nPassword: ", prompt.c_str());
    std::fflush(stderr);
    std::string line;
    if (!ReadHiddenLine(line) || line.empty()) return false;
    password = line;
    return true;
}
