// What a person sees: text on the standard output, in colour when it is a terminal.
#pragma once

#include <string>
#include <string_view>

namespace terminal {

enum class Colour { Plain, Bold, Red, Yellow, Green, Cyan, Grey };

// Decides about colour: only on a terminal, and not when NO_COLOR is set.
void Start();

// True when the standard output is a terminal that understands colours.
bool HasColour();

// The text between the codes for the colour; the plain text without a terminal.
std::string In(Colour colour, std::string_view text);

// Writes UTF-8 text to the standard output.
void Print(std::string_view text);

// Writes an error line of the tool itself.
void Complain(std::string_view text);

// A passing line that says what is being done; only on a terminal. An empty text wipes it.
void ShowProgress(std::string_view text);

} // namespace terminal
