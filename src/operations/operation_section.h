// A Setup.ini section of numbered operation lines: OPERNUM, OPER00, OPER01, ...
#pragma once

#include <string>

// The key of operation line `number`: "OPER00", "OPER01", ..., "OPER100".
std::wstring OperationKey(int number);

// Runs `execute` on each non-empty line of the section, in order, and stops at the first that
// returns false. False when it stopped so, or when the section name is empty.
bool RunOperationLines(const std::wstring& section, bool (*execute)(const std::wstring& line));

// True when a line is as long as the buffer that it was read into: its end may be missing, and a
// cut variable name or path would mean something else.
bool MayBeCut(const std::wstring& line);
