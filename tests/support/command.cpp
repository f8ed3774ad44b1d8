#include "support/command.h"

#include "testing/plain_connection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <sstream>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <grp.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support
{

namespace
{

void Require(bool done, const char* call)
{
    if (!done)
        throw std::system_error(errno, std::generic_category(), call);
}

// A file without a name.
int NewFile(const std::string& bytes)
{
    const int file = memfd_create("plantjournal", MFD_CLOEXEC);
    Require(file >= 0, "memfd_create");
    Require(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()), "write");
    Require(lseek(file, 0, SEEK_SET) == 0, "lseek");
    return file;
}

std::string BytesOf(int file)
{
    const off_t size = lseek(file, 0, SEEK_END);
    Require(size >= 0, "lseek");
    std::string bytes(static_cast<std::size_t>(size), '\0');
    Require(pread(file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()), "pread");
    return bytes;
}

// A terminal on which nothing is changed on its way, but Ctrl-C is a signal.
termios PlainTerminal()
{
    termios settings{};
    cfmakeraw(&settings);
    settings.c_lflag |= ISIG | ICANON;
    settings.c_iflag |= ICRNL;
    settings.c_cc[VINTR] = '\x03';
    settings.c_cc[VEOF] = '\x04';
    return settings;
}

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// Becomes the program, or ends.
[[noreturn]] void Become(Words words, Surroundings around)
{
    constexpr unsigned longest = 60; // seconds
    constexpr uid_t nobody = 65534;
    const std::vector<char*> arguments = Pointers(words);
    const std::vector<char*> environment = Pointers(around.Environment);
    alarm(longest);
    // The program may lie where the user may not go, as below the home of another.
    const int program = open(arguments[0], O_RDONLY | O_CLOEXEC);
    const bool isUser =
        !around.AsUser || geteuid() != 0 || (setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0);
    if (isUser && chdir(around.Directory.c_str()) == 0)
    {
        if (program >= 0)
            fexecve(program, arguments.data(), environment.data());
        execvpe(arguments[0], arguments.data(), environment.data());
    }
    constexpr int notFound = 127;
    _exit(notFound);
}

} // namespace

RunningProgram::RunningProgram(const Words& words, const Surroundings& around, const std::string& input)
{
    if (around.Columns > 0)
    {
        constexpr unsigned short lines = 24;
        const termios settings = PlainTerminal();
        const winsize size = {lines, static_cast<unsigned short>(around.Columns), 0, 0};
        Child = forkpty(&Terminal, nullptr, &settings, &size);
    }
    else
    {
        In = NewFile(input);
        Out = NewFile({});
        Error = NewFile({});
        Child = fork();
        if (Child == 0 &&
            (dup2(In, STDIN_FILENO) < 0 || dup2(Out, STDOUT_FILENO) < 0 || dup2(Error, STDERR_FILENO) < 0))
            _exit(1);
    }
    Require(Child >= 0, "fork");
    if (Child == 0)
        Become(words, around);
    if (Terminal >= 0)
        Type(input);
}

RunningProgram::~RunningProgram()
{
    if (Runs())
    {
        kill(Child, SIGKILL);
        waitpid(Child, nullptr, 0);
    }
    for (const int file : {In, Out, Error, Terminal})
        if (file >= 0)
            close(file);
}

bool RunningProgram::Runs()
{
    return Status < 0 && waitpid(Child, &Status, WNOHANG) == 0;
}

bool RunningProgram::ReadTerminal()
{
    std::array<char, 4096> bytes{};
    const ssize_t size = read(Terminal, bytes.data(), bytes.size()); // fails once nobody has the terminal open
    if (size > 0)
        Shown.append(bytes.data(), static_cast<std::size_t>(size));
    return size > 0;
}

bool RunningProgram::Await(const std::string& text)
{
    while (Shown.find(text) == std::string::npos)
        if (!ReadTerminal())
            return false;
    return true;
}

void RunningProgram::Type(const std::string& keys) const
{
    Require(write(Terminal, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size()), "write");
}

void RunningProgram::Interrupt()
{
    // Before that, the signal would end whatever runs.
    const auto catches = [this]
    {
        std::ifstream status("/proc/" + std::to_string(Child) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("SigCgt:"))
                return ((std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1U)) & 1U) != 0;
        return false;
    };
    while (Runs() && !catches())
        std::this_thread::yield();
    if (Runs())
        kill(Child, SIGINT);
}

ProgramResult RunningProgram::End()
{
    while (Terminal >= 0 && ReadTerminal())
    {
    }
    if (Status < 0)
        Require(waitpid(Child, &Status, 0) == Child, "waitpid");
    constexpr int ofSignals = 128;
    const int status = WIFEXITED(Status) ? WEXITSTATUS(Status) : ofSignals + WTERMSIG(Status);
    if (Terminal >= 0)
        return {status, Shown, {}};
    return {status, BytesOf(Out), BytesOf(Error)};
}

bool Await(const std::function<bool()>& condition, std::chrono::milliseconds time)
{
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition())
    {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

OtherProgram::OtherProgram(const std::string& journal, const std::string& begin)
    : Child(
          [&](const ParentProcess& parent)
          {
              const PlainConnection connection(journal);
              connection.RunSQL("PRAGMA busy_timeout=10000;" + begin);
              parent.Send("begun");
              parent.Wait();
              connection.RunSQL("COMMIT;");
          })
{
    EXPECT_EQ(Child.ReadLine(), "begun");
}

void OtherProgram::Finish()
{
    Child.Continue();
    EXPECT_EQ(Child.End(), "done");
}

CommandTest::CommandTest()
{
    Around.Directory = Scratch.File("");
    for (char** variable = environ; *variable != nullptr; ++variable)
    {
        const std::string text = *variable;
        const std::string name = text.substr(0, text.find('='));
        if (name == "PATH" || name.ends_with("SAN_OPTIONS") || name.starts_with("GCOV_"))
            Around.Environment.push_back(text);
    }
    Around.Environment.push_back("HOME=" + Scratch.File("home"));
    Around.Environment.push_back("XDG_DATA_HOME=" + Scratch.File("data"));
}

void CommandTest::TearDown()
{
    if (!std::filesystem::exists(Journal))
        return;
    Around.AsUser = false;
    if (Sound)
    {
        const ProgramResult check = Run({"check", "--file", Journal});
        EXPECT_EQ(check.Status, 0) << check.Error;
        EXPECT_EQ(check.Out, "");
    }
    EXPECT_EQ(Beside(), Left);
}

Words CommandTest::Line(const Words& words)
{
    Words line = {PLANTJOURNAL_COMMAND};
    line.insert(line.end(), words.begin(), words.end());
    return line;
}

ProgramResult CommandTest::Run(const Words& words, const std::string& input) const
{
    return RunningProgram(Line(words), Around, input).End();
}

ProgramResult CommandTest::RunOnTerminal(const Words& words, const std::string& typed) const
{
    Surroundings terminal = Around;
    terminal.Columns = 80;
    return RunningProgram(Line(words), terminal, typed).End();
}

std::string CommandTest::Done(const Words& words, const std::string& input) const
{
    const ProgramResult outcome = Run(words, input);
    EXPECT_EQ(outcome.Status, 0);
    EXPECT_EQ(outcome.Error, "");
    return outcome.Out;
}

std::string CommandTest::Told(const Words& words) const
{
    std::string told = Done(words);
    EXPECT_TRUE(told.ends_with('\n')) << told;
    told.erase(told.find_last_not_of('\n') + 1);
    return told;
}

JSON CommandTest::Parsed(Words words) const
{
    words.emplace_back("--json");
    return JSON::parse(Done(words));
}

std::string CommandTest::Refused(const Words& words, const std::string& input) const
{
    return RefusedWith(1, words, input);
}

std::string CommandTest::Mistaken(const Words& words) const
{
    return RefusedWith(2, words, {});
}

std::string CommandTest::RefusedWith(int status, const Words& words, const std::string& input) const
{
    const auto state = [this]
    { return std::pair(Beside(), std::filesystem::is_regular_file(Journal) ? FileBytes(Journal) : std::string()); };
    const auto before = state();
    const ProgramResult outcome = Run(words, input);
    EXPECT_EQ(outcome.Status, status);
    EXPECT_EQ(outcome.Out, "");
    EXPECT_NE(outcome.Error, "");
    EXPECT_TRUE(state() == before) << "something was changed";
    return outcome.Error;
}

void CommandTest::Write(const std::string& name, const std::string& bytes) const
{
    const std::filesystem::path path = Scratch.File(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    ASSERT_TRUE(file << bytes);
}

std::vector<std::string> CommandTest::Beside() const
{
    std::vector<std::string> names;
    const std::filesystem::path directory = std::filesystem::path(Journal).parent_path();
    if (std::filesystem::is_directory(directory))
        for (const auto& entry : std::filesystem::directory_iterator(directory))
            names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string CommandTest::Content() const
{
    return support::Content(PlainConnection(Journal).NativeHandle());
}

void CommandTest::Keep(const std::function<void(PlantRepository&)>& work) const
{
    PlantDatabase database;
    std::string error;
    ASSERT_TRUE(database.Open(Journal, &error)) << error;
    PlantRepository repository(database);
    work(repository);
}

void CommandTest::KeepEverything() const
{
    Write("basil.jpg", "a picture");
    Keep(
        [this](PlantRepository& repository)
        {
            Strain strain;
            strain.Name = "Genovese";
            strain.Breeder = "Riviera";
            strain.FloweringWeeks = 9;
            strain.Notes = "large leaves";
            Plant basil;
            basil.UUID = "0b0b0b0b-0000-4000-8000-000000000001";
            basil.Name = "Basil";
            basil.Strain = "Genovese";
            basil.Stage = PlantStage::Flower;
            basil.Sex = PlantSex::Female;
            basil.Tent = "South";
            basil.PotSize = "11 l";
            basil.Medium = "peat, \"fine\"";
            basil.SeedDate = "2026-02";
            basil.FlipHeightCm = 40.5;
            basil.FinalHeightCm = 0.1;
            basil.TransplantDate = "2026-03-12";
            basil.FlipDate = "2026-04-20";
            basil.Notes = "two\nlines";
            Plant cutting;
            cutting.UUID = "0b0b0b0b-0000-4000-8000-000000000002";
            cutting.Name = "Cutting";
            cutting.Strain = "Genovese";
            cutting.MotherPlantUUID = basil.UUID;
            cutting.Stage = PlantStage::Clone;
            cutting.CloneDate = "2026-04-01";
            PlantEvent event = {0, basil.UUID, "2026-05-01", PlantEventType::LSTTrained, "tied down"};
            PlantCareEntry feeding;
            feeding.PlantUUID = basil.UUID;
            feeding.CareDate = "2026-05-02";
            feeding.Action = PlantCareAction::Feed;
            feeding.Product = "Bloom A";
            feeding.AmountMl = 500;
            feeding.EC = 1.8;
            feeding.PH = 6.2;
            feeding.RunoffMl = 20;
            feeding.Notes = "half strength";
            HarvestRecord harvest;
            harvest.HarvestDate = "2026-07-01";
            harvest.WetWeightG = 410;
            harvest.DryWeightG = 96.5;
            harvest.QualityRating = 8;
            harvest.SeedYield = 12;
            harvest.CureOutcome = "good";
            harvest.Notes = "in the morning";
            PlantPhoto photo = {
                0, "0b0b0b0b-0000-4000-8000-000000000009", basil.UUID, "2026-05-03", Scratch.File("basil.jpg"), "low"};
            PlantHealthObservation seen = {0, basil.UUID, "2026-05-04", "thrips", 3, "soap", "few"};
            PlantJournalEntry entry = {0, cutting.UUID, "2026-05-05", PlantJournalType::Topping,
                                       "above the fifth node"};
            EXPECT_TRUE(repository.CreateStrain(strain));
            EXPECT_TRUE(repository.CreatePlant(basil));
            EXPECT_TRUE(repository.CreatePlant(cutting));
            EXPECT_TRUE(repository.CreatePlantEvent(event));
            EXPECT_TRUE(repository.CreatePlantCareEntry(feeding));
            EXPECT_TRUE(repository.SaveHarvestRecord(basil, harvest));
            EXPECT_TRUE(repository.CreatePlantPhoto(photo));
            EXPECT_TRUE(repository.CreatePlantHealthObservation(seen));
            EXPECT_TRUE(repository.CreatePlantJournalEntry(entry));
        });
}

} // namespace support
