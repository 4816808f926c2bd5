#pragma once
#include <string>

// Asks the user for a document open password: the dialog of the desktop application, the
// terminal or --password of the command line. False means the user cancelled.
class ivPasswordPrompt {
public:
    virtual ~ivPasswordPrompt() = default;
    // `fileName` is the file's short name; `password` holds the text tried last (UTF-8) and
    // receives the answer.
    virtual bool AskPassword(const std::string& fileName, std::string& password) = 0;
};
