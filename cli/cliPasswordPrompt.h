#pragma once
#include <optional>
#include <string>

#include "pdf/decode/ivPasswordPrompt.h"

// The command line's answer to a password prompt: the --password text once, or, without it
// and with a terminal on standard input, a line typed there without echo (an empty line or
// the end of input cancels). Otherwise the prompt is cancelled at once.
class cliPasswordPrompt final : public ivPasswordPrompt {
public:
    explicit cliPasswordPrompt(std::optional<std::string> password) : m_password(std::move(password)) {}
    bool AskPassword(const std::string& fileName, std::string& password) override;

private:
    std::optional<std::string> m_password;
    bool m_given = false;
};
