// Puts the replacements into the program's import table.
#pragma once

// Every import of the executable that has a replacement leads to it from now on. What the program
// looks up by GetProcAddress later is replaced as well.
void FillImports();
