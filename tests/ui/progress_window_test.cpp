// The progress window: its start, its dialog procedure and its texts.
#include "ui/progress_window.h"

#include "machine/machine.h"
#include "support/doctest_support.h"
#include "ui/progress_state.h"
#include "ui/resource.h"

#include <set>

using namespace machine;

namespace {

constexpr auto* WithWindow =
    L"[UI]\r\nNEEDUI=1\r\n"
    L"[USERLANG]\r\nLOCATION=3,HKEY_CURRENT_USER,%1,Language,,1,SOFTWARE\\Maker\r\n";

constexpr auto* Texts = L"[EN]\r\nSTR_PREPARE=Preparing\r\nSTR_INSTALL=Installing\r\n"
                        L"[ar]\r\nSTR_PREPARE=Preparing in Arabic\r\n"
                        L"[FR]\r\nSTR_PREPARE=Preparation\r\n";

void SetUp(Machine& m, const wchar_t* language) {
    m.WriteIni(WithWindow);
    m.WriteLang(Texts);
    if (language != nullptr) {
        m.SetRegistryText(L"HKEY_CURRENT_USER\\SOFTWARE\\Maker", L"Language", language);
    }
}

// What was done to the window, without the questions that may come in any order.
Lines WindowStory(const Machine& m) {
    Lines story = m.Story();
    std::erase(story, "GetModuleHandleW(null)");
    std::erase(story, "GetDesktopWindow()");
    return story;
}

// What the window shows now.
std::wstring Shown(const Machine& m) {
    REQUIRE(m.LastDialog() != nullptr);
    return m.WindowOf(m.LastDialog()).Text(PROGRESS_TEXT);
}

} // namespace

TEST_CASE("Without NEEDUI there is no window, no thread and no line, and texts are only loaded") {
    Machine m;
    m.WriteLang(Texts);
    CHECK(ShowProgressUI());
    CHECK(m.RunningThreads() == 0);
    CHECK(m.Story() == Lines{});
    LanguageName = L"EN";
    ShowLangText(L"STR_INSTALL");
    CHECK(m.Story() == Lines{});
    CHECK(std::wstring(ProgressText.data()) == L"Installing");
}

TEST_CASE("The window opens on a thread of its own with icons and the first text") {
    Machine m;
    SetUp(m, L"FR");
    CHECK(ShowProgressUI());
    CHECK(m.LastDialog() == nullptr);
    CHECK(m.Log() == Lines{"ShowProgressUI: User set lang to FR"});
    // Never joined: the handle is closed at once.
    CHECK(m.Open("thread") == 0);
    m.ForgetJournal();

    m.LetTimePass(1ms);
    CHECK(WindowStory(m) == Lines{"DialogBoxParamW(101, desktop)", "LoadIconW(103)",
                                  "SendMessageW(dialog, 0x80, 0x1, 0x20067)",
                                  "SendMessageW(dialog, 0x80, 0x0, 0x20067)",
                                  "SetDlgItemTextW(dialog, 1001, Preparation)"});
    CHECK(ProgressDialog == m.LastDialog());
    CHECK(Shown(m) == L"Preparation");
    CHECK(m.RunningThreads() == 1);
}

TEST_CASE("The language is English when no request for it is configured") {
    Machine m;
    m.WriteIni(L"[UI]\r\nNEEDUI=1\r\n");
    m.WriteLang(Texts);
    CHECK(ShowProgressUI());
    CHECK(m.Log() ==
          Lines{"LoadLangConfig: No user language configuration found",
                "ShowProgressUI: Load language configuration fail,use default language"});
    m.LetTimePass(1ms);
    CHECK(Shown(m) == L"Preparing");
}

TEST_CASE("The language is English when the value of the request is missing") {
    Machine m;
    SetUp(m, nullptr);
    CHECK(ShowProgressUI());
    CHECK(m.Logged("ShowProgressUI: User set lang to EN"));
    m.LetTimePass(1ms);
    CHECK(Shown(m) == L"Preparing");
}

TEST_CASE("Arabic lays the window out from right to left, whatever the case of its code") {
    for (const wchar_t* code : {L"AR", L"ar", L"aR"}) {
        Machine m;
        SetUp(m, code);
        CHECK(ShowProgressUI());
        m.LetTimePass(1ms);
        CHECK(m.CallsOf("GetWindowLongW") == Lines{"GetWindowLongW(dialog, -20)"});
        CHECK(m.CallsOf("SetWindowLongW") == Lines{"SetWindowLongW(dialog, -20, 0x420088)"});
        CHECK(Shown(m) == L"Preparing in Arabic");
    }
}

TEST_CASE("Right to left is added to the style that the window has, before anything else is done "
          "to the window") {
    Machine m;
    SetUp(m, L"AR");
    CHECK(ShowProgressUI());
    m.ForgetJournal();
    m.LetTimePass(1ms);
    const Lines story = WindowStory(m);
    REQUIRE(story.size() == 7);
    CHECK(story[0] == "DialogBoxParamW(101, desktop)");
    CHECK(story[1] == "GetWindowLongW(dialog, -20)");
    CHECK(story[2] == "SetWindowLongW(dialog, -20, 0x420088)");
    CHECK(story[3] == "LoadIconW(103)");
    CHECK(story[6] == "SetDlgItemTextW(dialog, 1001, Preparing in Arabic)");
}

TEST_CASE("Other languages leave the window's layout alone") {
    Machine m;
    SetUp(m, L"FR");
    CHECK(ShowProgressUI());
    m.LetTimePass(1ms);
    CHECK(m.CallsOf("GetWindowLongW") == Lines{});
    CHECK(m.CallsOf("SetWindowLongW") == Lines{});
}

TEST_CASE("The dialog procedure leaves every message but the first to the system") {
    Machine m;
    SetUp(m, L"FR");
    CHECK(ShowProgressUI());
    m.LetTimePass(1ms);
    const HWND dialog = m.LastDialog();
    const DLGPROC procedure = m.WindowOf(dialog).Procedure;
    REQUIRE((procedure != nullptr));
    m.ForgetJournal();
    for (const int message : {WM_CLOSE, WM_COMMAND, WM_DESTROY, WM_KEYDOWN, WM_PAINT, WM_QUIT}) {
        CHECK(procedure(dialog, static_cast<UINT>(message), IDCANCEL, 0) == FALSE);
    }
    CHECK(m.Story() == Lines{});
    CHECK(procedure(dialog, WM_INITDIALOG, 0, 0) == TRUE);
}

TEST_CASE("A text that is shown before the window exists appears when it opens") {
    Machine m;
    SetUp(m, L"EN");
    CHECK(ShowProgressUI());
    ShowLangText(L"STR_INSTALL");
    CHECK(m.CallsOf("SetDlgItemTextW") == Lines{});
    m.LetTimePass(1ms);
    CHECK(Shown(m) == L"Installing");
}

TEST_CASE("A text that is shown later replaces the one in the window") {
    Machine m;
    SetUp(m, L"EN");
    CHECK(ShowProgressUI());
    m.LetTimePass(1ms);
    m.ForgetJournal();
    ShowLangText(L"STR_INSTALL");
    CHECK(m.Story() == Lines{"SetDlgItemTextW(dialog, 1001, Installing)"});
    CHECK(Shown(m) == L"Installing");
}

TEST_CASE("A text that comes between the stored handle and the first text is not lost") {
    Machine m;
    SetUp(m, L"EN");
    CHECK(ShowProgressUI());
    // The second icon is set right before the handle is stored.
    m.AfterCall("SendMessageW", 2, [] { ProgressText = {L"Newest"}; });
    m.LetTimePass(1ms);
    CHECK(Shown(m) == L"Newest");
}

TEST_CASE("Whichever thread is faster, the window ends with the newest text") {
    std::set<std::vector<std::pair<int, std::wstring>>> histories;
    for (unsigned seed = 1; seed <= 200; ++seed) {
        CAPTURE(seed);
        Machine m;
        SetUp(m, L"EN");
        m.ShuffleThreads(seed);
        CHECK(ShowProgressUI());
        ShowLangText(L"STR_INSTALL");
        m.LetThreadsFinish();
        CHECK(Shown(m) == L"Installing");
        histories.insert(m.WindowOf(m.LastDialog()).Texts);
    }
    // The text came before the window, with its first one, and after it.
    CHECK(histories.size() >= 3);
}

TEST_CASE("A text that Lang.ini lacks gives an empty line") {
    Machine m;
    SetUp(m, L"EN");
    CHECK(ShowProgressUI());
    m.LetTimePass(1ms);
    ShowLangText(L"STR_INSTALL_FAIL");
    CHECK(Shown(m) == L"");
    CHECK(m.WindowOf(m.LastDialog()).Texts.size() == 2);
}

TEST_CASE("A setup goes on without its window when the thread cannot be started") {
    Machine m;
    SetUp(m, L"EN");
    m.FailCall("CreateThread", 1, ERROR_NOT_ENOUGH_MEMORY);
    CHECK(ShowProgressUI());
    CHECK(m.Log() == Lines{"ShowProgressUI: User set lang to EN",
                           "ShowProgressUI: Start ui failed,error code = 8"});
    m.LetThreadsFinish();
    CHECK(m.LastDialog() == nullptr);
    ShowLangText(L"STR_INSTALL");
    CHECK(std::wstring(ProgressText.data()) == L"Installing");
}

TEST_CASE("A desktop that shows no dialog leaves the setup as it is") {
    Machine m;
    SetUp(m, L"EN");
    m.HasNoDesktop();
    CHECK(ShowProgressUI());
    m.LetThreadsFinish();
    CHECK(m.RunningThreads() == 0);
    CHECK(ProgressDialog == nullptr);
    CHECK(m.Log() == Lines{"ShowProgressUI: User set lang to EN"});
}

TEST_CASE("NEEDUI is a number: 256 wants the window, 0 does not") {
    for (const auto& [value, threads] : {std::pair{L"256", 1}, std::pair{L"0", 0}}) {
        Machine m;
        m.WriteIni(L"[UI]\r\nNEEDUI=" + std::wstring(value) + L"\r\n");
        CHECK(ShowProgressUI());
        CHECK(m.CallsOf("CreateThread").size() == static_cast<std::size_t>(threads));
    }
}
