#pragma once
#include <QString>

#include "pdf/analysis/ivObjectItems.h"

class QMenu;
class QWidget;
class ivPdf;
class ivCommands;
struct XrefEntry;
struct pdfObject;

// The object commands that the trees and the views' tabs share: trimming a menu to what
// applies to an object, and the three saves.

// Removes the save and locate commands that do not apply and disables "References to This
// Object" when nothing refers to it. Call RestoreObjectMenu after the menu closes: the
// actions are shared with every other menu.
void TrimObjectMenu(QMenu& menu, ivCommands& commands, const ivObjectMenu& trim);
void RestoreObjectMenu(ivCommands& commands);

// "Save Object As": the entry's bytes as stored.
void SaveEntryWithDialog(QWidget* parent, ivPdf& doc, const XrefEntry& entry);
// "Save Stream As": the stream's decoded data; nothing for another object.
void SaveStreamWithDialog(QWidget* parent, ivPdf& doc, const pdfObject* stream);
// "Save Image As": the decoded image, through the export formats; "Not a stream" for
// another object.
void SaveObjectImageWithDialog(QWidget* parent, ivPdf& doc, const pdfObject* stream);

// "to N G R" or "from N G R": the cross-reference filter of LinkTo and LinkFrom.
QString LinkFilterText(bool to, const XrefEntry& entry);
