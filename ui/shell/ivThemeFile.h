#pragma once
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// The numeric identifier under which painting code asks for a theme property ("border" 202,
// "background" 8, "text" 240, …); -1 for a name the program does not know. Two names may
// share an identifier ("background" and "background-top").
int ThemePropertyId(std::string_view name);

// A colour theme file ("white.thm"): sections named after the windows' colour-theme names,
// each with "property = value" lines.
//
//   # comment
//   [mainmenu]
//   background = #ffffff
//   text = #202020
//
// Properties the program does not know are skipped; a property given twice keeps the last
// value. What a value means (a colour "#rrggbb", a number) is up to whoever asks.
class ivThemeFile {
public:
    void Parse(std::string_view text);
    // The value of the property with identifier `id` in `section`, if the file gives one.
    std::optional<std::string> Get(std::string_view section, int id) const;
    std::size_t Size() const { return m_values.size(); }

private:
    std::map<std::pair<std::string, int>, std::string, std::less<>> m_values;
};
