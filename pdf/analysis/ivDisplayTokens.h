#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "pdf/analysis/pdfContents.h"
#include "pdf/object/pdfObject.h"

class ivPdf;
class ivPdfInfo;

// What the object viewer shows: display tokens, laid out in lines, with the marks its help
// and the content-stream check use. Texts are UTF-8.

// Marks of a token.
enum ivTokenMark : std::uint16_t {
    kMarkOperand = 1,
    kMarkOperator = 2,  // an operator, or a dictionary's key
    kMarkPush = 4,      // "q"
    kMarkPop = 8,       // "Q"
    kMarkOutsideDict = 16,
    kMarkInText = 32,  // between "BT" and "ET"
};

struct ivDisplayToken {
    enum class Kind : std::uint8_t { Record, Close, Text };
    Kind kind = Kind::Record;
    const pdfObject* record = nullptr;  // Record: the value (an array's or dictionary's opening); Close: that value
    std::string text;                   // Text: the line
    std::uint16_t marks = 0;
    // The dictionary key this token belongs to (the key itself for a key), and the key of the
    // dictionary that holds that one, for help on nested keys; null outside dictionaries.
    const pdfObject* key = nullptr;
    const pdfObject* outerKey = nullptr;
    bool isKey = false;      // a dictionary's key
    bool isContent = false;  // a token of a content stream
    int operation = -1;      // content: the index of its operation's first token in the line list
};

// One line of the view: its tokens, in order, and how far it is indented (levels).
struct ivViewLine {
    int indent = 0;
    std::vector<std::size_t> tokens;  // indices into ivViewText::tokens
};

struct ivViewText {
    std::vector<ivDisplayToken> tokens;
    std::vector<ivViewLine> lines;
    std::string status;  // "Push/Pop context are not match" when q and Q do not balance
    // The text of a line: its tokens separated by blanks, after `indent` × 2 blanks.
    std::string LineText(std::size_t line) const;
};

// A token's text: the record's as the views show it ("<<", "/Name", "12 0 R", …), "]" or ">>"
// for a closing bracket, or the line of text.
std::string DisplayTokenText(const ivDisplayToken& token);

// An object with its nested arrays and dictionaries: a dictionary's pairs a line each.
ivViewText ObjectViewText(const pdfObject* object);
// A content stream's tokens, an operation a line, marked by the structure check.
ivViewText ContentViewText(const pdfContentOps& ops);
// The objects of an object stream in index order: "#%d [%d %d obj]", the object's tokens and
// "%d bytes" (or "--end" without an entry).
ivViewText ObjectStreamViewText(ivPdf& doc, const pdfStream& stream);

// The help the viewer shows for token `index` of `text` in an object of `role`, from the key
// and operator descriptions; empty when there is none.
std::string TokenHelp(ivPdfInfo& info, const ivViewText& text, std::size_t index, std::uint8_t role);
// The role of an object for its help: an annotation's is refined by its Subtype.
std::uint8_t HelpRoleOf(const pdfObject* object, std::uint8_t entryRole);
