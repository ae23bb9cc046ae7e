// waiting_messages.h
//
// Keeps the windows of the calling thread alive during long work.
#pragma once

// Translates and dispatches all messages that wait. A quit message stays for the loop that it is meant
// for. True if there was a message to dispatch.
bool HandleWaitingMessages();
