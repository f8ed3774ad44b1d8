#include "command_line/parser.h"
#include "commands/care_summary.h"
#include "commands/commands.h"
#include "commands/field_flags.h"
#include "commands/outcome.h"
#include "commands/selection.h"
#include "journal/find_record.h"
#include "journal/next_command.h"
#include "record/amount.h"
#include "record/letters.h"
#include "record/operations.h"
#include "record/text.h"
#include "refusal.h"
#include "terminal/printable.h"

#include <algorithm>
#include <iostream>
#include <memory>

// `feed` and `water`: a care entry for each of several plants.

namespace
{

struct CareRequest
{
    Selection Plants; // the last of the words can be the amount
    std::optional<std::string> Amount;
    std::optional<FieldFlags<PlantCareEntry>> Fields;
};

std::string AmountObjection(const std::string& text)
{
    try
    {
        static_cast<void>(MillilitresFrom(text));
        return {};
    }
    catch (const BadValue& bad)
    {
        return bad.what();
    }
}

// Removes the amount from the end of the words and returns it. The exact name of a plant is not an amount.
std::optional<std::string> TakeAmount(const std::vector<Plant>& plants, std::vector<std::string>& words)
{
    if (words.empty() || IsExactName(plants, words.back()))
        return std::nullopt;
    std::string amount = words.back();
    const bool unitAlone =
        words.size() > 1 && IsAmountUnit(amount) && LooksLikeAmount(words[words.size() - 2] + amount);
    if (unitAlone)
        amount = words[words.size() - 2] + amount;
    if (!LooksLikeAmount(amount))
        return std::nullopt;
    words.resize(words.size() - (unitAlone ? 2 : 1));
    return amount;
}

bool IsNumberWithoutUnit(const std::string& word)
{
    return LooksLikeAmount(word + "ml");
}

bool NamesNoPlant(const std::vector<Plant>& plants, const std::string& word)
{
    return std::none_of(plants.begin(), plants.end(),
                        [&](const Plant& plant)
                        { return WithoutCase(plant.Name) == WithoutCase(word) || plant.UUID.starts_with(word); });
}

// Refuses a word after the first plant that begins with a digit and names no plant: an amount was meant.
void RefuseMistakenAmounts(const std::vector<Plant>& plants, const Selection& selection)
{
    for (std::size_t i = selection.HasSelectors() ? 0 : 1; i < selection.Named.size(); ++i)
        if (const std::string& word = selection.Named[i];
            !word.empty() && IsDigits(word.substr(0, 1)) && !IsNumberWithoutUnit(word) && NamesNoPlant(plants, word))
            RefuseUsage(InQuotes(word) + " is not an amount; write an amount like 500ml or 0.5l");
}

// Refuses a number at the end, which could be the prefix of another plant's UUID, and reports a plant that is named
// like an amount.
void CheckLastWord(const std::vector<Plant>& plants, const Selection& selection, bool hasAmount)
{
    if (selection.Named.empty())
        return;
    const bool alone = selection.Named.size() == 1 && !selection.HasSelectors();
    if (alone && (!IsNumberWithoutUnit(selection.Named.back()) || !NamesNoPlant(plants, selection.Named.back())))
        return;
    const std::string& word = selection.Named.back();
    const bool isName = IsExactName(plants, word);
    if (!isName && !hasAmount && IsNumberWithoutUnit(word))
        RefuseUsage(InQuotes(word) + " has no unit; write an amount like " + word + "ml" +
                    (alone || selection.HasSelectors() ? "" : ", or name a plant by more of its UUID"));
    if (!hasAmount)
        RefuseMistakenAmounts(plants, selection);
    if (isName && !hasAmount && LooksLikeAmount(word))
        std::cerr << "notice: " << Printable(word) << ": this names a plant, not the amount; --amount "
                  << Printable(word) << " sets the amount\n";
}

// Sets the amount from the last word or --amount.
void SetAmount(const std::optional<std::string>& lastWord, const CareRequest& request, PlantCareEntry& entry)
{
    const int given = (lastWord ? 1 : 0) + (request.Amount ? 1 : 0) + (entry.AmountMl != 0 ? 1 : 0);
    if (given > 1)
        RefuseUsage("the amount is given twice; write it once, after the plants, with --amount or with --amount-ml");
    if (lastWord)
    {
        if (const std::string objection = AmountObjection(*lastWord); !objection.empty())
            RefuseUsage(objection);
        entry.AmountMl = MillilitresFrom(*lastWord);
    }
    else if (request.Amount)
        entry.AmountMl = MillilitresFrom(*request.Amount);
}

// Lists which plants got their entry before one could not be stored.
std::string StoredAndNot(const std::string& journal, const std::vector<std::string>& stored,
                         const std::vector<Plant>& plants)
{
    std::vector<std::string> missing;
    for (std::size_t i = stored.size(); i < plants.size(); ++i)
        missing.push_back(DisplayName(plants[i]));
    return (stored.empty() ? "" : "; " + NextCommand("undo", journal) + " rolls back what was stored") +
           "\n  stored: " + (stored.empty() ? "nothing" : Joined(stored, ", ")) +
           "\n  not stored: " + Joined(missing, ", ");
}

// Each entry is stored by itself: storing one uses a transaction of its own.
void StoreForEach(Session& session, const std::vector<Plant>& plants, const PlantCareEntry& pattern, Outcome& outcome)
{
    PlantRepository& repository = session.Write();
    std::vector<std::string> stored;
    for (Plant plant : plants)
    {
        PlantCareEntry entry = pattern;
        entry.PlantUUID = plant.UUID;
        try
        {
            session.Require(CreateRecord(repository, plant, entry),
                            "the care entry of " + DisplayName(plant) + " could not be stored");
        }
        catch (const Refusal& refusal)
        {
            if (plants.size() == 1)
                throw;
            if (!stored.empty())
                outcome.Finish();
            throw Refusal(refusal.what() + StoredAndNot(session.Path(), stored, plants));
        }
        const std::string id = std::to_string(entry.ID);
        stored.push_back(DisplayName(plant) + " (care " + id + ")");
        outcome.Add(CareSummary(plant, entry), id, RecordJSON(entry, plant));
    }
    outcome.Finish();
}

void RecordCare(Session& session, const CareRequest& request, PlantCareAction action)
{
    const std::vector<Plant> plants = AllPlants(session);
    Selection selection = request.Plants;
    PlantCareEntry entry;
    entry.Action = action;
    request.Fields->Apply(session, FlagsFor::Add, entry);
    const std::optional<std::string> lastWord = TakeAmount(plants, selection.Named);
    SetAmount(lastWord, request, entry);
    CheckLastWord(plants, selection, lastWord || entry.AmountMl != 0);
    const std::vector<Plant> selected = SelectPlants(plants, selection);
    Notices notices;
    for (const Plant& plant : selected)
        Append(notices, CheckValues(entry, plant, session.Flags));
    PrintNotices(notices);
    Outcome outcome(session, selection.RecordsStored());
    StoreForEach(session, selected, entry, outcome);
}

void AddCareCommand(CLI::App& program, Session& session, PlantCareAction action, const std::string& name,
                    const std::string& purpose, const std::string& examples)
{
    auto request = std::make_shared<CareRequest>();
    CLI::App& command = AddCommand(program, name, purpose, examples,
                                   [&session, request, action] { RecordCare(session, *request, action); });
    AddArguments(command, "PLANT", "plants, then the amount, such as 500ml or 0.5l", request->Plants.Named,
                 Need::Optional);
    AddSelectors(command, request->Plants);
    AddFlag(command, {"--amount", "amount given, such as 500ml or 0.5l", "AMOUNT", Need::Optional, AmountObjection},
            request->Amount);
    request->Fields.emplace(command, FlagsFor::Add, "Action");
}

} // namespace

void AddFeedAndWater(CLI::App& program, Session& session)
{
    AddCareCommand(program, session, PlantCareAction::Feed, "feed", "Record a feeding of one or several plants",
                   "feed Basil 500ml --product \"Bloom A\" --ec 1.8 --ph 6.2\n"
                   "feed --tent Big --stage flower 0.5l --product \"Bloom A\"");
    AddCareCommand(program, session, PlantCareAction::Water, "water", "Record a watering of one or several plants",
                   "water Basil Chili 500ml\n"
                   "water --all 0.75l --date yesterday");
}
