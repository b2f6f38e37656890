// What a rehearsal writes down: everything that the program said, asked for and would have done, in
// order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rehearsal {

enum class Deed {
    Said,                // Subject: a log line
    SettingRead,         // Subject: key, Object: section looked for, Text: value, Source
    TextShown,           // Subject: key of Lang.ini, Text: the text
    Waited,              // Number: milliseconds
    WaitedForSystem,     // until Windows has no installation pending
    WatchedCopy,         // Number: milliseconds that a copy into the store may take
    TreeRefreshed,       // the device tree was enumerated anew
    ServicesAdjusted,    // serial services are looked for
    HookSet,             // Subject: path of the hook library
    WindowOpened,        // the progress window
    DeviceRemoved,       // Subject: instance ID
    DeviceMarked,        // Subject: instance ID, marked for reinstallation
    OrderSent,           // Subject: hardware ID, Number: control code, Text: command in hexadecimal
    DriverInstalled,     // Subject: device ID, Object: INF
    GenericDriverChosen, // the composite driver that comes with Windows, for Subject
    InfStaged,           // Subject: INF, Object: its name in the store
    InfUninstalled,      // Subject: file name in the store
    StoreSearched,       // Subject: pattern; the OEM INF files are read
    FileDeleted,         // Subject: path
    FileMade,            // Subject: path of an empty file
    FolderMade,          // Subject: path
    FileCopied,          // Subject: source, Object: destination
    ValueSet,            // Subject: key, Object: value name, Text: data, Number: type
    ValueDeleted,        // Subject: key, Object: value name
    KeyDeleted,          // Subject: key
    ValueRead,           // Subject: key, Object: value name, Text: what was found
};

struct Event {
    Deed What = Deed::Said;
    std::wstring Subject{};
    std::wstring Object{};
    std::wstring Text{};
    std::int64_t Number = 0;
    // SettingRead: the section of Setup.ini that decided; empty when no section has the key.
    std::wstring Source{};
    // The run's state at that moment, which operation lines are filled with.
    std::uint8_t Mode = 1;
    std::wstring BaseId{};
};

enum class Ending {
    Returned,     // the run came to its end
    ProcessEnded, // a fault in an INF ended the process on the spot
    Endless,      // the run goes on without limit
};

struct Recording {
    std::vector<Event> Events;
    Ending End = Ending::Returned;
    // What the run's function returned: 1 success, 0 failure.
    int Result = 0;
};

} // namespace rehearsal
