#include "command_line/parser.h"
#include "commands/check_values.h"
#include "commands/commands.h"
#include "commands/plant_set.h"
#include "commands/print.h"
#include "journal/find_record.h"
#include "plant_report.h"
#include "record/photo_file.h"
#include "record/picture.h"
#include "record/text.h"
#include "refusal.h"
#include "system.h"
#include "terminal/interrupt.h"
#include "terminal/printable.h"
#include "transfer/new_file.h"

#include <algorithm>
#include <filesystem>
#include <memory>

using plant_file::PathOfText;
using plant_file::TextOfPath;

namespace
{

namespace fs = std::filesystem;

struct ReportArguments
{
    std::string Destination;
    PlantSetOptions Plants;
    std::optional<std::string> Title;
    bool EmbedPhotos = false;
    bool Overwrite = false;
};

// A path with its directory's links resolved, so that `..` can lead from one path to another.
fs::path Resolved(const fs::path& path)
{
    std::error_code error;
    const fs::path directory = fs::weakly_canonical(fs::absolute(path).parent_path(), error);
    return (error ? fs::absolute(path).parent_path() : directory) / path.filename();
}

// A path as a URL: all but letters, digits and a few signs is written as %XX.
std::string URLOf(const fs::path& path)
{
    constexpr const char* digits = "0123456789ABCDEF";
    std::string url;
    for (const char letter : TextOfPath(path.generic_u8string())) // with slashes on every system
    {
        const auto byte = static_cast<unsigned char>(letter);
        const bool isPlain = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                             (letter >= '0' && letter <= '9') || std::string("/-._~").find(letter) != std::string::npos;
        if (isPlain)
            url += letter;
        else
            url.append({'%', digits[byte >> 4U], digits[byte & 15U]});
    }
    return url;
}

// Finds the images of a page, and collects why some cannot be shown.
class PhotoImages
{
  public:
    PhotoImages(const std::string& journal, const std::string& page, bool embed)
        : Journal(Resolved(PathOfText(journal)).parent_path()), Page(Resolved(PathOfText(page)).parent_path()),
          Embed(embed)
    {
    }

    // The `src` of the image of a photo; empty where it cannot be read.
    std::string SourceOf(const PlantPhoto& photo)
    {
        StopIfInterrupted();
        const fs::path path = Journal / PathOfText(photo.FilePath); // an absolute path replaces the directory
        const std::string file = TextOfPath(path);
        try
        {
            constexpr int longestEdge = 1200;
            if (Embed)
                return DataURI(SmallJPEG(file, longestEdge));
            if (const std::string problem = PhotoFileProblem(file); !problem.empty())
                throw BadPicture("the file cannot be found: " + problem);
            return URLOf(Resolved(path).lexically_relative(Page));
        }
        catch (const BadPicture& bad)
        {
            Problems.push_back(
                {Printable("photo " + InQuotes(photo.FilePath)), std::string(bad.what()) + "; the page is without it"});
            return {};
        }
    }

    const Notices& NoticesFound() const { return Problems; }

  private:
    fs::path Journal;
    fs::path Page;
    bool Embed;
    Notices Problems;
};

// Throws Refusal where the report would replace what is to be kept.
void CheckDestination(const Session& session, const ReportArguments& arguments)
{
    const fs::path destination = PathOfText(arguments.Destination);
    std::error_code ignored;
    if (fs::equivalent(destination, PathOfText(session.Path()), ignored))
        throw Refusal(arguments.Destination + ": this is the journal; name another file");
    if (!arguments.Overwrite && fs::exists(fs::symlink_status(destination, ignored)))
        throw Refusal(arguments.Destination + " exists; --overwrite replaces it");
}

PlantReportOptions OptionsOf(Session& session, const std::vector<Plant>& plants, const ReportArguments& arguments)
{
    PlantReportOptions options;
    options.Plants = PlantSetOf(session, plants, arguments.Plants);
    options.From = FirstDate(arguments.Plants);
    options.To = LastDate(arguments.Plants);
    options.Today = PlantEventCurrentDate();
    const auto isIn = [&](const Plant& plant) { return IsIn(options.Plants, plant); };
    const auto count = std::count_if(plants.begin(), plants.end(), isIn);
    if (count == 0 && !plants.empty())
        throw Refusal("no plant matches the options; `plantjournal plant list --all` shows all plants");
    options.Title = count == 1 ? DisplayName(*std::find_if(plants.begin(), plants.end(), isIn)) : "Plant journal";
    if (arguments.Title)
        options.Title = *arguments.Title;
    return options;
}

void PrintWritten(const Session& session, const std::string& destination, std::size_t plants, std::size_t bytes)
{
    constexpr std::size_t kilobyte = 1000;
    if (session.AsJSON)
    {
        JSON json = JSON::Object();
        json.Add("File", JSONOf(destination));
        json.Add("Plants", JSONOf(static_cast<std::int64_t>(plants)));
        json.Add("Bytes", JSONOf(static_cast<std::int64_t>(bytes)));
        PrintJSON(json);
    }
    else if (session.Quiet)
        std::cout << Printable(destination) << '\n';
    else
        std::cout << "Wrote " << Printable(destination) << ": " << plants << (plants == 1 ? " plant, " : " plants, ")
                  << (bytes + kilobyte - 1) / kilobyte << " kB\n";
}

void WriteReport(Session& session, const ReportArguments& arguments)
{
    const bool toStandardOutput = arguments.Destination == "-";
    if (!toStandardOutput)
        CheckDestination(session, arguments);
    const std::vector<Plant> plants = AllPlants(session);
    PlantReportOptions options = OptionsOf(session, plants, arguments);
    PhotoImages images(session.Path(), toStandardOutput ? "page.html" : arguments.Destination, arguments.EmbedPhotos);
    options.PhotoSource = [&](const PlantPhoto& photo) { return images.SourceOf(photo); };
    std::string page;
    if (const PlantQueryResult result = WritePlantReport(session.ReadDatabase(), options, page); !result)
        throw Refusal(session.Path() + ": " + result.Error + "; nothing was written; run `plantjournal check`");
    StopIfInterrupted();
    PrintNotices(images.NoticesFound());
    if (toStandardOutput)
    {
        std::cout << page;
        return;
    }
    WriteAtomically(arguments.Destination, arguments.Overwrite ? Existing::Replace : Existing::Keep,
                    [&](const fs::path& file) { WriteFile(file, page); });
    const auto count =
        std::count_if(plants.begin(), plants.end(), [&](const Plant& plant) { return IsIn(options.Plants, plant); });
    PrintWritten(session, arguments.Destination, static_cast<std::size_t>(count), page.size());
}

} // namespace

void AddReportCommand(CLI::App& program, Session& session)
{
    auto arguments = std::make_shared<ReportArguments>();
    CLI::App& command = AddCommand(program, "report", "Write a page with pictures of a season or of one plant",
                                   "report season.html\nreport basil.html Basil --embed-photos\n"
                                   "report summer.html --tent South --from 2026-06 --to 2026-08",
                                   [&session, arguments] { WriteReport(session, *arguments); });
    AddArgument(command, "DESTINATION", "the HTML file to write, or - for standard output", arguments->Destination);
    AddPlantNames(command, arguments->Plants);
    AddPlantFlag(command, arguments->Plants);
    AddPlantOptions(command, arguments->Plants);
    AddPeriod(command, arguments->Plants);
    AddFlag(command, {"--title", "the title of the page", "TEXT"}, arguments->Title);
    AddSwitch(command, "--embed-photos", "hold the photos in the page, scaled; otherwise it links to their files",
              arguments->EmbedPhotos);
    AddSwitch(command, "--overwrite", "replace the file if it exists", arguments->Overwrite);
}
