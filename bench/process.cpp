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
    explicit Redirections(const std::string& input)
    {
        Require(posix_spawn_file_actions_init(&Actions), "posix_spawn");
        Add(STDIN_FILENO, input, O_RDONLY);
        Add(STDOUT_FILENO, "/dev/null", O_WRONLY);
    }
    ~Redirections() { posix_spawn_file_actions_destroy(&Actions); }
    Redirections(const Redirections&) = delete;
    Redirections& operator=(const Redirections&) = delete;

    const posix_spawn_file_actions_t* Get() const { return &Actions; }

  private:
    void Add(int descriptor, const std::string& path, int mode)
    {
        Require(posix_spawn_file_actions_addopen(&Actions, descriptor, path.c_str(), mode, 0), path);
    }

    posix_spawn_file_actions_t Actions{};
};

} // namespace

void RunProgram(const std::vector<std::string>& words, const std::string& input)
{
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str())); // NOLINT(cppcoreguidelines-pro-type-const-cast): POSIX
    arguments.push_back(nullptr);

    const Redirections redirections(input);
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

std::int64_t CountInstructions(const std::vector<std::string>& words, const std::string& dump, const std::string& input)
{
    std::vector<std::string> counted = {BENCH_VALGRIND, "--quiet", "--tool=callgrind", "--callgrind-out-file=" + dump};
    counted.insert(counted.end(), words.begin(), words.end());
    RunProgram(counted, input);

    std::ifstream lines(dump);
    const std::string totals = "totals: ";
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(totals, 0) == 0)
            return std::stoll(line.substr(totals.size()));
    throw std::runtime_error(dump + ": callgrind left no totals");
}
