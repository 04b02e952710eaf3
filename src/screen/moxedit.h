// The record editor of EDIT and APPEND: the fields of one record, one to a line.
#pragma once

#include <string>

namespace mox {

// Edits the current record of the selected area: 0. Nothing is written unless the person saves.
int MoxEdit();

// True when nobody changed the text of a field, and setting the field with it would lose what is
// stored: a number that the field's form can't show, or what stands behind a zero byte.
bool StaysStored(int field, const std::string& text, const std::string& stored);
}  // namespace mox
