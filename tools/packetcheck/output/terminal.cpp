#include "output/terminal.h"

#include "platform/platform.h"

#include <cstdio>

namespace terminal {

namespace {

bool Coloured = false;

// Present since Windows 10; older consoles refuse it and show plain text.
constexpr DWORD VirtualTerminal = 0x0004;

bool IsTerminal(HANDLE output) {
    DWORD mode = 0;
    return GetConsoleMode(output, &mode) != FALSE &&
           SetConsoleMode(output, mode | VirtualTerminal) != FALSE;
}

const char* CodeOf(Colour colour) {
    switch (colour) {
    case Colour::Bold:
        return "\x1b[1m";
    case Colour::Red:
        return "\x1b[1;31m";
    case Colour::Yellow:
        return "\x1b[1;33m";
    case Colour::Green:
        return "\x1b[1;32m";
    case Colour::Cyan:
        return "\x1b[36m";
    case Colour::Grey:
        return "\x1b[90m";
    default:
        return "";
    }
}

void Write(DWORD stream, std::string_view text) {
    HANDLE const handle = GetStdHandle(stream);
    while (!text.empty()) {
        DWORD written = 0;
        if (WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ==
                FALSE ||
            written == 0) {
            return;
        }
        text.remove_prefix(written);
    }
}

} // namespace

void Start() {
    SetConsoleOutputCP(CP_UTF8);
    const bool unwanted = GetEnvironmentVariableW(L"NO_COLOR", nullptr, 0) != 0;
    Coloured = !unwanted && IsTerminal(GetStdHandle(STD_OUTPUT_HANDLE));
}

bool HasColour() {
    return Coloured;
}

std::string In(Colour colour, std::string_view text) {
    if (!Coloured || colour == Colour::Plain) {
        return std::string(text);
    }
    return std::string(CodeOf(colour)).append(text).append("\x1b[0m");
}

void Print(std::string_view text) {
    Write(STD_OUTPUT_HANDLE, text);
}

void Complain(std::string_view text) {
    Write(STD_ERROR_HANDLE, std::string("PacketCheck: ").append(text).append("\n"));
}

void ShowProgress(std::string_view text) {
    if (Coloured) {
        Print(std::string("\r\x1b[K").append(text));
    }
}

} // namespace terminal
