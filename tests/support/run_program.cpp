// Child-process runner for the end-to-end tests: posix_spawn with three pipes, one
// poll loop that writes standard input and drains both outputs against a deadline.
#include "run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

extern char** environ;

namespace {

// Owns one descriptor.
class Fd {
   public:
    Fd() = default;
    explicit Fd(int fd) : fd_(fd) {}
    ~Fd() { reset(); }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    int get() const { return fd_; }
    void reset(int fd = -1) {
        if (fd_ >= 0) ::close(fd_);
        fd_ = fd;
    }

   private:
    int fd_ = -1;
};

struct Pipe {
    Fd read, write;
    bool open() {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0) return false;
        read.reset(fds[0]);
        write.reset(fds[1]);
        return true;
    }
};

// The environment of the child: ours, with the given variables replaced or added.
std::vector<std::string> buildEnv(const std::vector<std::pair<std::string, std::string>>& env) {
    std::vector<std::string> out;
    for (char** e = environ; e && *e; ++e) {
        std::string entry = *e;
        std::string name = entry.substr(0, entry.find('='));
        bool replaced = false;
        for (const auto& [k, v] : env) replaced = replaced || k == name;
        if (!replaced) out.push_back(entry);
    }
    for (const auto& [k, v] : env) out.push_back(k + "=" + v);
    return out;
}

std::vector<char*> cPointers(std::vector<std::string>& strings) {
    std::vector<char*> p;
    for (auto& s : strings) p.push_back(s.data());
    p.push_back(nullptr);
    return p;
}

ProgramResult failure(const std::string& what) {
    ProgramResult r;
    r.err = "runProgram: " + what + ": " + strerror(errno) + "\n";
    return r;
}

}  // namespace

ProgramResult runProgram(const std::string& path, const std::vector<std::string>& args,
                         const std::string& stdinText,
                         const std::vector<std::pair<std::string, std::string>>& env,
                         int timeoutMs) {
    Pipe in, out, err;
    if (!in.open() || !out.open() || !err.open()) return failure("pipe");

    std::vector<std::string> argStrings{path};
    argStrings.insert(argStrings.end(), args.begin(), args.end());
    std::vector<std::string> envStrings = buildEnv(env);
    std::vector<char*> argv = cPointers(argStrings);
    std::vector<char*> envp = cPointers(envStrings);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.read.get(), 0);
    posix_spawn_file_actions_adddup2(&actions, out.write.get(), 1);
    posix_spawn_file_actions_adddup2(&actions, err.write.get(), 2);
    // The child starts with default dispositions and no blocked signals, whatever
    // the test process did to SIGPIPE or SIGINT.
    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    sigset_t defaults, empty;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGINT);
    sigemptyset(&empty);
    posix_spawnattr_setsigdefault(&attr, &defaults);
    posix_spawnattr_setsigmask(&attr, &empty);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

    pid_t pid = -1;
    int rc = posix_spawn(&pid, path.c_str(), &actions, &attr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attr);
    if (rc != 0) {
        errno = rc;
        return failure("cannot start " + path);
    }
    in.read.reset();
    out.write.reset();
    err.write.reset();

    // A child that stops reading early must not kill the test with SIGPIPE.
    signal(SIGPIPE, SIG_IGN);
    fcntl(in.write.get(), F_SETFL, O_NONBLOCK);
    if (stdinText.empty()) in.write.reset();

    ProgramResult r;
    size_t written = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (out.read.get() >= 0 || err.read.get() >= 0) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            r.timedOut = true;
            break;
        }
        pollfd fds[3] = {
            {out.read.get(), POLLIN, 0}, {err.read.get(), POLLIN, 0}, {in.write.get(), POLLOUT, 0}};
        int n = poll(fds, 3, static_cast<int>(left.count()));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) break;
        Fd* readers[2] = {&out.read, &err.read};
        std::string* sinks[2] = {&r.out, &r.err};
        for (int i = 0; i < 2; ++i) {
            if (!(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            char buf[4096];
            ssize_t got = ::read(readers[i]->get(), buf, sizeof buf);
            if (got > 0) {
                sinks[i]->append(buf, static_cast<size_t>(got));
            } else if (got == 0 || errno != EINTR) {
                readers[i]->reset();
            }
        }
        if (fds[2].revents & (POLLOUT | POLLERR | POLLHUP)) {
            ssize_t put =
                ::write(in.write.get(), stdinText.data() + written, stdinText.size() - written);
            if (put > 0) written += static_cast<size_t>(put);
            if ((put < 0 && errno != EAGAIN && errno != EINTR) || written == stdinText.size())
                in.write.reset();
        }
    }
    in.write.reset();

    if (r.timedOut) kill(pid, SIGKILL);
    int wstatus = 0;
    // Both outputs closed: the child is ending; wait for it within what is left.
    while (!r.timedOut) {
        pid_t w = waitpid(pid, &wstatus, WNOHANG);
        if (w == pid) break;
        if (std::chrono::steady_clock::now() >= deadline) {
            r.timedOut = true;
            kill(pid, SIGKILL);
            break;
        }
        usleep(1000);
    }
    if (r.timedOut) {
        while (waitpid(pid, &wstatus, 0) < 0 && errno == EINTR) {
        }
        r.status = -1;
        return r;
    }
    if (WIFEXITED(wstatus)) {
        r.status = WEXITSTATUS(wstatus);
    } else if (WIFSIGNALED(wstatus)) {
        r.termSignal = WTERMSIG(wstatus);
        r.status = -1;
    }
    return r;
}
