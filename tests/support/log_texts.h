// Which log texts the tests reach, for the list that tests/log_coverage.py makes.
#pragma once

// Notes that the running test reached the log text. At process exit all of them are written to the
// file that the environment variable SETUP_TEST_LOG_TEXTS names, if it is set.
void RecordLogText(const wchar_t* format);
