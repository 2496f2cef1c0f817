#include "TerminationSignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int pipeEnds[2] = {-1, -1};
volatile sig_atomic_t pending = 0;
constexpr int handled[] = {SIGTERM, SIGHUP, SIGINT};

void onSignal(int number)
{
    if (pending) {
        // The first is still being handled and the sender insists.
        std::signal(number, SIG_DFL);
        std::raise(number);
        return;
    }
    pending = 1;
    const unsigned char byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t ignored = ::write(pipeEnds[1], &byte, 1);
}

} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent)
{
    if (pipeEnds[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, pipeEnds) != 0)
        return;
    m_notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::readPipe);
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (int number : handled)
        ::sigaction(number, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    if (!m_notifier)
        return;
    for (int number : handled)
        std::signal(number, SIG_DFL);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    pipeEnds[0] = pipeEnds[1] = -1;
    pending = 0;
}

void TerminationSignals::readPipe()
{
    unsigned char byte = 0;
    if (::read(pipeEnds[0], &byte, 1) == 1)
        emit received(byte);
}
