// The form of a step, in which grammar and machine meet: a line of text, a word and, behind a
// blank, its operand.
#pragma once

#include <cstddef>
#include <string_view>

namespace mox {

// Characters of a word. The machine cuts a longer one, which would then be another step.
constexpr size_t maxWord = 10;

// The step of the grammar that stands where a command file gets a statement's source.
constexpr std::string_view sourceMarker = ":*";

}  // namespace mox
