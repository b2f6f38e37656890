// Scripted file operations: create, delete and copy, as written in Setup.ini.
#pragma once

#include <string>

// Runs the file operation lines of a section. False only when the section name is empty: a line
// that stops the section (see below) does not fail the run.
bool RunFileOperSection(const std::wstring& section);

// Carries out one line `opcode,F1,F2,F3,F4,P1,...`: 1 creates the folder F1 (F2 empty) or the empty
// file F1F2, 2 deletes F1F2, 3 copies F1F2 over F3F4. False only for a line without parameters,
// which stops its section. Everything that fails is logged as "ExecutSingleFileOper: File oper req
// ...", also a line with too few fields or one whose paths do not fit into 259 characters; neither
// is carried out.
bool ExecutSingleFileOper(const std::wstring& line);
