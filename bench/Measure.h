// What the benchmark programs share: running a command and reading what the kernel accounted for it. Plain
// POSIX, because a child's peak memory counts that of the program which started it.
#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <functional>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace varnel::bench {

struct Run
{
    double wall = 0; ///< milliseconds
    double cpu = 0;  ///< milliseconds, user and system
    double peak = 0; ///< MiB of resident memory
    int status = 0;
};

inline double now()
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// Starts a command with standard output going to `output`, -1 for nowhere.
inline pid_t start(const std::vector<std::string>& command, int output = -1)
{
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    if (output >= 0)
        posix_spawn_file_actions_adddup2(&actions, output, 1);
    else
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
        std::fprintf(stderr, "cannot start %s\n", arguments[0]);
        std::exit(1);
    }
    posix_spawn_file_actions_destroy(&actions);
    return child;
}

inline Run finish(pid_t child, double started)
{
    Run run;
    rusage usage{};
    int status = 0;
    while (wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    run.wall = now() - started;
    const auto milliseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    run.cpu = milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
    run.peak = static_cast<double>(usage.ru_maxrss) / 1024;
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return run;
}

inline Run runOnce(const std::vector<std::string>& command)
{
    const double started = now();
    return finish(start(command), started);
}

/// A command that fails ends the benchmark: its figures would be those of something else.
inline Run runToSuccess(const std::vector<std::string>& command)
{
    const Run run = runOnce(command);
    if (run.status != 0) {
        std::fprintf(stderr, "%s ended with status %d\n", command[0].c_str(), run.status);
        std::exit(1);
    }
    return run;
}

/// Runs the commands in turn, A B C A B C …, after one round that does not count.
inline std::vector<std::vector<Run>> runInTurn(const std::vector<std::vector<std::string>>& commands,
                                               int rounds)
{
    std::vector<std::vector<Run>> runs(commands.size());
    for (int round = -1; round < rounds; ++round) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
            const Run run = runToSuccess(commands[i]);
            if (round >= 0)
                runs[i].push_back(run);
        }
    }
    return runs;
}

inline double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

inline double median(const std::vector<Run>& runs, double Run::* figure)
{
    std::vector<double> values;
    values.reserve(runs.size());
    for (const Run& run : runs)
        values.push_back(run.*figure);
    return median(values);
}

/// One line of the table that scripts/bench prints; an empty target is a figure for information.
inline void report(const std::string& name, double value, const char* unit, const char* target)
{
    std::printf("%s\t%.3f\t%s\t%s\n", name.c_str(), value, unit, target);
    std::fflush(stdout);
}

/// The line of a figure that cannot be had because what it is compared with is not installed.
inline void reportSkipped(const std::string& name, const char* unit, const char* target)
{
    std::printf("%s\tskipped\t%s\t%s\n", name.c_str(), unit, target);
    std::fflush(stdout);
}

/// The practice host on a free port, for the life of this object, or until the program exits: a failure that
/// ends the benchmark on the spot destroys no object. There is one at a time.
class PracticeHost
{
public:
    explicit PracticeHost(const std::string& binFolder)
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            std::exit(1);
        m_child =
            start({binFolder + "/varnel-practice-host", "--port", "0", "--pace", "0", "--quiet", "--whole"},
                  ends[1]);
        running() = m_child;
        std::atexit([] {
            if (running() > 0)
                kill(running(), SIGTERM);
        });
        close(ends[1]);
        std::string line;
        char byte = 0;
        while (read(ends[0], &byte, 1) == 1 && byte != '\n')
            line += byte;
        m_output = ends[0];
        const std::size_t begin = line.find("http://");
        if (begin == std::string::npos) {
            std::fprintf(stderr, "the practice host did not start: %s\n", line.c_str());
            std::exit(1);
        }
        m_url = line.substr(begin, line.find(' ', begin) - begin);
    }
    PracticeHost(const PracticeHost&) = delete;
    PracticeHost& operator=(const PracticeHost&) = delete;
    ~PracticeHost()
    {
        kill(m_child, SIGTERM);
        running() = -1;
        waitpid(m_child, nullptr, 0);
        close(m_output);
    }

    const std::string& url() const { return m_url; }
    std::string port() const { return m_url.substr(m_url.rfind(':') + 1); }

private:
    static pid_t& running()
    {
        static pid_t child = -1;
        return child;
    }

    pid_t m_child = -1;
    int m_output = -1;
    std::string m_url;
};

} // namespace varnel::bench
