// Text files: COPY ... SDF and APPEND FROM ... SDF.
//
// One record is one line; the deletion mark isn't written. The delimiter chooses the form:
//
//   ""      fixed columns   each field at full width, nothing between
//   ","     comma form      blanks at both ends removed, character fields in quoted string form
//   other   delimited       each field at full width, the delimiter between
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "session/misc.h"

namespace mox {

// Writes records of the selected area to a new text file, as moxCpyToDbf does to a table; a name
// that is no field gives an empty value. The delimiter is a value or a text. 0, or -1 after a
// report.
int moxCpyToSdf(int start, int count, const Lines& fields, const std::string& filename,
                const std::string& condition, const std::string& delimiter);

// Appends a record for each line of a text file and takes back those for which the condition isn't
// true. 0, or -1 after a report.
int moxApndFmSdf(const std::string& filename, const std::string& delimiter,
                 const std::string& condition);

// Cuts a line into at most limit values: quoted strings, with their quotes, and texts up to the
// delimiter (not empty). Blanks and tabs ahead of a value and behind it are skipped; what stands
// between a value and the delimiter ends the line. Returns the number of values.
int getCSV(std::string_view line, std::string_view delimiter, size_t limit,
           std::vector<std::string_view>& values);
// Length of the quoted string at the start of the text, quotes included, or 0.
size_t is_string(std::string_view text);
// Number of characters ahead of the delimiter or of the end.
size_t is_notDelim(std::string_view text, std::string_view delimiter);

}  // namespace mox
