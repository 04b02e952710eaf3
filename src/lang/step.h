// The form of a step, in which grammar and machine meet: a line of text, a word and, behind a
// blank, its operand.
#pragma once

#include <cstddef>
#include <string_view>

namespace mox {

constexpr size_t maxWord = 10;  // characters of a word

// A word in a table. The machine cuts one that is too long, which would then be another step; so
// its row doesn't compile.
struct StepWord : std::string_view {
  consteval StepWord(const char* word) : std::string_view(word) {
    if (size() > maxWord) throw "the word of a step is too long";
  }
};

// The step of the grammar that stands where a command file gets a statement's source.
constexpr std::string_view sourceMarker = ":*";

}  // namespace mox
