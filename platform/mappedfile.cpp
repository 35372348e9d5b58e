#include "mappedfile.h"

#include "regularfile.h"

#include <csetjmp>
#include <csignal>
#include <mutex>

#include <sys/mman.h>

namespace {

// The mapping a thread is reading under guard, and where to go back to when one of its pages fails.
struct Guard
{
    const char *begin;
    const char *end;
    sigjmp_buf back;
};

thread_local Guard *t_guard = nullptr;
struct sigaction g_previous{};

void onBusError(int signal, siginfo_t *info, void *context)
{
    Guard *guard = t_guard;
    const char *at = static_cast<const char *>(info->si_addr);
    if (guard && at >= guard->begin && at < guard->end)
        siglongjmp(guard->back, 1);
    // Not a guarded read: what would have happened without this handler happens.
    if ((g_previous.sa_flags & SA_SIGINFO) && g_previous.sa_sigaction) {
        g_previous.sa_sigaction(signal, info, context);
    } else if (g_previous.sa_handler != SIG_DFL && g_previous.sa_handler != SIG_IGN) {
        g_previous.sa_handler(signal);
    } else {
        // The faulting access runs again on return and the default action ends the process.
        ::signal(SIGBUS, SIG_DFL);
    }
}

void installHandler()
{
    static std::once_flag once;
    std::call_once(once, [] {
        struct sigaction action{};
        action.sa_sigaction = onBusError;
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        sigemptyset(&action.sa_mask);
        ::sigaction(SIGBUS, &action, &g_previous);
    });
}

} // namespace

MappedFile::MappedFile(const RegularFile &file)
{
    const qint64 size = file.sizeAtOpening();
    if (!file.isOpen() || size <= 0)
        return;
    // MAP_POPULATE: the pages the cache holds are all entered at once, not one fault at a time.
    void *data = ::mmap(nullptr, size_t(size), PROT_READ, MAP_PRIVATE | MAP_POPULATE, file.descriptor(), 0);
    if (data == MAP_FAILED)
        return;
    m_data = static_cast<const char *>(data);
    m_size = qsizetype(size);
}

MappedFile::~MappedFile()
{
    if (m_data)
        ::munmap(const_cast<char *>(m_data), size_t(m_size));
}

bool MappedFile::runGuarded(void (*read)(void *), void *context) const
{
    installHandler();
    Guard guard{m_data, m_data + m_size, {}};
    Guard *const outer = t_guard;
    // SA_NODEFER leaves SIGBUS unblocked in the handler, so no mask needs restoring on the way back.
    if (sigsetjmp(guard.back, 0) != 0) {
        t_guard = outer;
        return false;
    }
    t_guard = &guard;
    read(context);
    t_guard = outer;
    return true;
}
