#include "support/log_texts.h"

#include "machine/text.h"

#include <cstdlib>
#include <doctest/doctest.h>
#include <fstream>
#include <map>
#include <set>
#include <string>

namespace {

std::string RunningTest;

// One line per text, line breaks and tabs escaped as in the source.
std::string Escaped(const std::wstring& format) {
    std::string line;
    for (const char character : machine::Utf8(format)) {
        switch (character) {
        case '\n':
            line += "\\n";
            break;
        case '\t':
            line += "\\t";
            break;
        default:
            line += character;
        }
    }
    return line;
}

// The texts with the names of the tests that reached them; writes itself down when it ends.
class ReachedTexts {
public:
    ReachedTexts() = default;
    ReachedTexts(const ReachedTexts&) = delete;
    ReachedTexts& operator=(const ReachedTexts&) = delete;
    ~ReachedTexts() {
        const char* path = std::getenv("SETUP_TEST_LOG_TEXTS");
        if (path == nullptr) {
            return;
        }
        std::ofstream file(path, std::ios::binary);
        for (const auto& [format, tests] : tests_) {
            for (const std::string& test : tests) {
                file << Escaped(format) << '\t' << test << '\n';
            }
        }
    }
    void Add(const wchar_t* format) { tests_[format].insert(RunningTest); }

private:
    std::map<std::wstring, std::set<std::string>> tests_;
};

// Knows which test runs.
struct TestListener : doctest::IReporter {
    explicit TestListener(const doctest::ContextOptions&) {}
    void report_query(const doctest::QueryData&) override {}
    void test_run_start() override {}
    void test_run_end(const doctest::TestRunStats&) override {}
    void test_case_start(const doctest::TestCaseData& test) override { RunningTest = test.m_name; }
    void test_case_reenter(const doctest::TestCaseData&) override {}
    void test_case_end(const doctest::CurrentTestCaseStats&) override {}
    void test_case_exception(const doctest::TestCaseException&) override {}
    void subcase_start(const doctest::SubcaseSignature&) override {}
    void subcase_end() override {}
    void log_assert(const doctest::AssertData&) override {}
    void log_message(const doctest::MessageData&) override {}
    void test_case_skipped(const doctest::TestCaseData&) override {}
};

} // namespace

REGISTER_LISTENER("log_texts", 1, TestListener);

void RecordLogText(const wchar_t* format) {
    static ReachedTexts reached;
    reached.Add(format);
}
