// Asio's header first: it wants the newer sockets' header before the system's own.
#include <boost/asio/io_context.hpp>
// Needs what it includes.
#include <windows.h>

#include <atomic>

#include "sandbox/http/end_request.h"

namespace tavrix::sandbox {
namespace {

std::atomic<boost::asio::io_context*> to_stop = nullptr;

// On a thread of the system's. Whoever closes the console, logs off or shuts down takes the return
// for the answer and ends the process, so then there is none; the system waits a few seconds.
BOOL WINAPI asked_to_end(DWORD event) {
    boost::asio::io_context* const io = to_stop;
    if (io == nullptr) return FALSE;
    io->stop();
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
    return TRUE;
}

}  // namespace

struct EndRequest::Implementation {};

EndRequest::EndRequest(boost::asio::io_context& io) {
    to_stop = &io;
    SetConsoleCtrlHandler(asked_to_end, TRUE);
}

EndRequest::~EndRequest() {
    to_stop = nullptr;
    SetConsoleCtrlHandler(asked_to_end, FALSE);
}

}  // namespace tavrix::sandbox
