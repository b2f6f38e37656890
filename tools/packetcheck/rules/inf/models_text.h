// The models of an INF as they stand in its text, also those that the program does not read.
#pragma once

#include "reading/inf_text.h"

namespace rules {

// Who reads a models section on 64-bit (x64) Windows.
enum class Reader {
    Program,     // the program and Windows
    WindowsOnly, // its decoration carries a Windows version
    Nobody,      // it is for another architecture
    Unstamped,   // a macro of the build stands in its decoration
};

struct ModelsLine {
    std::wstring Models;     // name of the section, without decoration
    std::wstring Decoration; // "NTamd64.10.0"; empty for the undecorated one
    Reader By = Reader::Program;
    std::size_t Line = 0;
    std::wstring Description;
    std::wstring Install; // empty when it names none
    TextList Ids;
};

// The lines of all models sections that the manufacturers name, in the order in which the program
// would come to them.
std::vector<ModelsLine> ModelsOf(const reading::InfText& inf);

// The line of the first models line, read by `by`, that lists the ID; 0 when there is none.
std::size_t LineOfId(const std::vector<ModelsLine>& models, std::wstring_view id);

// "Standard.NTamd64"; without a dot for an empty decoration.
std::wstring Decorated(std::wstring_view section, std::wstring_view decoration);

// The install sections that models lines name which Windows reads, or only those that the program
// reads as well; each once.
enum class ReadBy { Windows, Program };
TextList InstallSectionsOf(const std::vector<ModelsLine>& models, ReadBy reader = ReadBy::Windows);

// The copy sections that the program comes to, in its order.
TextList CopySectionsOf(const reading::InfText& inf, const TextList& installSections);

} // namespace rules
