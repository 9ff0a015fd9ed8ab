// The child process of a conversation: posix_spawn with its input and output on pipes.
#include "interactive_program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

extern char** environ;

namespace {

size_t occurrences(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

}  // namespace

InteractiveProgram::InteractiveProgram(const std::string& path, std::vector<std::string> args,
                                       std::vector<std::string> env) {
    int in[2], out[2];
    if (pipe2(in, O_CLOEXEC) != 0) return;
    if (pipe2(out, O_CLOEXEC) != 0) {
        close(in[0]);
        close(in[1]);
        return;
    }
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_adddup2(&fa, in[0], 0);
    posix_spawn_file_actions_adddup2(&fa, out[1], 1);
    posix_spawn_file_actions_adddup2(&fa, out[1], 2);
    args.insert(args.begin(), path);
    for (char** e = environ; *e; ++e) env.emplace_back(*e);  // the first of a name wins
    std::vector<char*> argv, envp;
    for (auto& a : args) argv.push_back(a.data());
    for (auto& e : env) envp.push_back(e.data());
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    if (posix_spawn(&pid_, path.c_str(), &fa, nullptr, argv.data(), envp.data()) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&fa);
    close(in[0]);
    close(out[1]);
    in_ = in[1];
    out_ = out[0];
}

InteractiveProgram::~InteractiveProgram() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    for (int fd : {in_, out_})
        if (fd >= 0) close(fd);
}

bool InteractiveProgram::type(const std::string& text) {
    return in_ >= 0 && write(in_, text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

bool InteractiveProgram::waitFor(const std::string& text, size_t times) {
    auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (occurrences(out, text) < times)
        if (std::chrono::steady_clock::now() > until || !pump()) return false;
    return true;
}

void InteractiveProgram::interrupt() {
    if (pid_ > 0) kill(pid_, SIGINT);
}

int InteractiveProgram::finish() {
    if (in_ >= 0) close(in_);
    in_ = -1;
    while (pump()) {
    }
    if (pid_ <= 0) return -1;
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool InteractiveProgram::pump() {
    struct pollfd p = {out_, POLLIN, 0};
    if (out_ < 0 || poll(&p, 1, 10000) != 1) return false;
    char buf[4096];
    ssize_t n = read(out_, buf, sizeof buf);
    if (n > 0) out.append(buf, static_cast<size_t>(n));
    return n > 0;
}
