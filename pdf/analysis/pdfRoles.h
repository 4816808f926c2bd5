#pragma once
#include <cstdint>
#include <span>
#include <string_view>

// One row of the role table: the code an entry carries for the use it was first met in,
// its section in the key-help file and its title in the views (either may be absent).
struct pdfRoleInfo {
    std::uint8_t code;
    const char* section;  // null when the role has no key-help section
    const char* title;    // null when the role has no title
};

// Every row of the role table, in its stored order.
std::span<const pdfRoleInfo> RoleTable();

// The title of a role: the first row with the code in stored order; null for none.
const char* RoleTitle(std::uint8_t code);
// The key-help section of a role (first row with the code); null for none.
const char* RoleSectionName(std::uint8_t code);
// The role whose section name equals `name` regardless of case; 0 when none.
std::uint8_t RoleFromSectionName(std::string_view name);
