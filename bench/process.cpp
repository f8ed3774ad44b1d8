#include "process.h"

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

void Require(int error, const std::string& what)
{
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

class Redirections
{
  public:
    explicit Redirections(const Streams& streams)
    {
        Require(posix_spawn_file_actions_init(&Actions), "posix_spawn");
        Add(STDIN_FILENO, streams.Input, O_RDONLY);
        Add(STDOUT_FILENO, streams.Output, O_WRONLY | O_CREAT | O_TRUNC);
    }
    ~Redirections() { posix_spawn_file_actions_destroy(&Actions); }
    Redirections(const Redirections&) = delete;
    Redirections& operator=(const Redirections&) = delete;

    const posix_spawn_file_actions_t* Get() const { return &Actions; }

  private:
    void Add(int descriptor, const std::string& path, int mode)
    {
        Require(posix_spawn_file_actions_addopen(&Actions, descriptor, path.c_str(), mode, 0600), path);
    }

    posix_spawn_file_actions_t Actions{};
};

// Runs a program under callgrind with options, and returns the total of the dump.
std::int64_t RunUnderCallgrind(const std::vector<std::string>& options, const std::vector<std::string>& words,
                               const std::string& dump, const Streams& streams)
{
    std::vector<std::string> counted = {BENCH_VALGRIND, "--quiet", "--tool=callgrind", "--callgrind-out-file=" + dump};
    counted.insert(counted.end(), options.begin(), options.end());
    counted.insert(counted.end(), words.begin(), words.end());
    RunProgram(counted, streams);

    std::ifstream lines(dump);
    const std::string totals = "totals: ";
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(totals, 0) == 0)
            return std::stoll(line.substr(totals.size()));
    throw std::runtime_error(dump + ": callgrind left no totals");
}

} // namespace

void RunProgram(const std::vector<std::string>& words, const Streams& streams)
{
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast): POSIX
    arguments.push_back(nullptr);

    const Redirections redirections(streams);
    pid_t process = -1;
    Require(posix_spawn(&process, arguments.front(), redirections.Get(), nullptr, arguments.data(), environ),
            words.front());
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR)
            throw std::system_error(errno, std::generic_category(), words.front());
    if (status != 0)
        throw std::runtime_error(words.front() + ": failed");
}

std::int64_t CountInstructions(const std::vector<std::string>& words, const std::string& dump, const Streams& streams)
{
    return RunUnderCallgrind({}, words, dump, streams);
}

std::int64_t CountMarkedInstructions(const std::vector<std::string>& words, const std::string& dump)
{
    return RunUnderCallgrind({"--instr-atstart=no"}, words, dump, {});
}
