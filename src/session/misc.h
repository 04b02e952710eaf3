// Text helpers on which every module stands. They keep no state and report no errors.
//
// A text is bytes without a zero byte. Case conversion and comparison touch only the ASCII
// letters. Where a byte is compared with a bound it counts as signed, so that a byte of 128 or
// above is below any printable bound. The blank set is space, tab, carriage return, line feed.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mox {

using Lines = std::vector<std::string>;

// A text made by a printf format.
[[gnu::format(printf, 1, 2)]] std::string StrFmt(const char* format, ...);

// Removes trailing carriage returns and line feeds; returns its argument.
std::string& rm_nl(std::string& text);
// Removes trailing bytes of the blank set; returns its argument.
std::string& trim(std::string& text);
// The text from its first byte outside the blank set on, and up to its last one.
std::string_view dlb(std::string_view text);
std::string_view dtb(std::string_view text);
// True when the text is empty or holds only bytes of the blank set.
bool isBlank(std::string_view text);

char UpperChr(char c);
char LowerChr(char c);
std::string strUpper(std::string_view text);
// Sign of the comparison by byte value, the ASCII letters without case.
int StrICmp(std::string_view a, std::string_view b);

// The pieces between the separators, empty ones included; the separator isn't empty.
Lines split(std::string_view text, std::string_view separator);

// Quoted string form: a double quote, the text with each double quote doubled, a double quote.
// qs2s also takes a text without a leading quote; a lone quote ends the content.
std::string qs2s(std::string_view quoted);
// The same, where it stands; in room when a quote inside is doubled.
std::string_view qs2s(std::string_view quoted, std::string& room);
std::string s2qs(std::string_view text);

// Word scanners: put one word of at most max bytes into word and return the index of the first
// byte not consumed.
//
// GetWord skips spaces and tabs and takes bytes from '0' on but 127, so that a dot, a comma, a
// quote, a minus or a high byte ends a word. It returns 0 only at the end of the text or when the
// text starts at once with a byte outside words.
size_t GetWord(std::string_view text, size_t max, std::string& word);
// GetWordX skips bytes up to 32, takes bytes above 32 but 127 and the comma, then skips bytes up
// to 32 and one comma.
size_t GetWordX(std::string_view text, size_t max, std::string& word);
// At most slots - 1 words of at most 80 bytes through GetWord, up to the first that consumes
// nothing. Blanks behind the last word make one more, empty, word.
Lines GetWords(std::string_view text, size_t slots);

// Index of the entry that equals the key ignoring case, by binary search, or -1. The names are
// sorted by byte value ignoring case.
int findndx(std::string_view key, std::span<const std::string_view> names);

// The file name with the extension (dot included) added unless a dot stands in its last part.
// The last part begins behind the last forward slash or, when the name has none, behind the last
// backslash.
std::string FnExtDflt(std::string_view name, std::string_view ext);
// The same, but any dot in the whole name keeps the extension away.
std::string FnExt(std::string_view name, std::string_view ext);

// Takes the first argument that equals the name (ignoring case) out, from index 0 on: 1 when there
// was one, else 0.
int ArgGet(Lines& arguments, std::string_view name);

// Today's local date as day, month, year modulo 100.
struct Date {
  int day, month, year;
};
Date DateToday();
// The date as "dd/mm/yy".
std::string DateNow();

}  // namespace mox
