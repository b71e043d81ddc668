#include "framework/base/PendingMessages.h"

#include <utility>

namespace kelvo {
namespace {

PendingMessagesHook pending_messages_hook = nullptr;

} // namespace

void ProcessPendingMessages() {
    if (pending_messages_hook != nullptr) pending_messages_hook();
}

PendingMessagesHook SetPendingMessagesHook(PendingMessagesHook hook) {
    return std::exchange(pending_messages_hook, hook);
}

} // namespace kelvo
