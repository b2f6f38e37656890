// Handles of the stage: what stands behind them lives until it is closed.
#pragma once

#include "rehearsal/stage.h"

#include <memory>

namespace rehearsal {

// Something that the program holds open.
struct HandleContent {
    HandleContent() = default;
    virtual ~HandleContent() = default;
    HandleContent(const HandleContent&) = delete;
    HandleContent& operator=(const HandleContent&) = delete;
};

// The content's address is the handle.
HANDLE OpenHandle(std::unique_ptr<HandleContent> content);
void CloseStageHandle(HANDLE handle);

template <typename Content>
Content& ContentOf(HANDLE handle) {
    return *static_cast<Content*>(static_cast<HandleContent*>(handle));
}

} // namespace rehearsal
