// The record editor of EDIT and APPEND: the fields of one record, one to a line.
#pragma once

#include <string>

namespace mox {

// Edits the current record of the selected area: 0. Nothing is written unless the person saves.
int MoxEdit();

// Brings the text of a numeric field into the field's form and draws it; a number too large for
// the field becomes 0. -1 when the field's length and decimals leave no digit before the point.
int showVal(int row, int col, std::string& text, int field);
// True when nobody changed the text of a field, and setting the field with it would lose what is
// stored: a number that the field's form can't show, or what stands behind a zero byte.
bool StaysStored(int field, const std::string& text, const std::string& stored);
// True when a number has at most so many digits before the point, one less for a negative one.
bool inRange(int digits, double x);

}  // namespace mox
