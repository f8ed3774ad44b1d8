#include "commands/answer.h"
#include "commands/care_summary.h"
#include "commands/commands.h"
#include "commands/plant_labels.h"
#include "commands/plant_set.h"
#include "journal/find_record.h"
#include "record/amount.h"

#include <memory>

namespace
{

struct TotalsRequest
{
    PlantSetOptions Plants;
    std::optional<std::string> By;
    std::optional<std::string> Per;
    std::optional<std::string> Action;
    bool AsCSV = false;
};

template <typename Value> struct Choice
{
    const char* Word;
    Value Chosen;
    const char* Heading;
};

constexpr Choice<PlantTotalGroup> Groups[] = {{"plant", PlantTotalGroup::Plant, "Plant"},
                                              {"strain", PlantTotalGroup::Strain, "Strain"},
                                              {"tent", PlantTotalGroup::Tent, "Tent"},
                                              {"product", PlantTotalGroup::Product, "Product"}};
constexpr Choice<PlantPeriod> Periods[] = {
    {"day", PlantPeriod::Day, "Day"}, {"week", PlantPeriod::Week, "Week from"}, {"month", PlantPeriod::Month, "Month"}};
constexpr Choice<PlantCareAction> Actions[] = {{"Feed", PlantCareAction::Feed, ""},
                                               {"Water", PlantCareAction::Water, ""}};

// The choice with this word, in any letter case; null for another word.
template <typename Value, std::size_t Number>
const Choice<Value>* ChoiceOf(const Choice<Value> (&choices)[Number], const std::optional<std::string>& word)
{
    for (const Choice<Value>& choice : choices)
        if (word && EqualIgnoringCase(*word, choice.Word))
            return &choice;
    return nullptr;
}

template <typename Value, std::size_t Number>
void AddChoice(CLI::App& command, const std::string& flag, const std::string& help,
               const Choice<Value> (&choices)[Number], std::optional<std::string>& word)
{
    std::vector<std::string> words;
    for (const Choice<Value>& choice : choices)
        words.emplace_back(choice.Word);
    AddFlag(command,
            {flag, help, Joined(words, "|"), Need::Optional,
             [&choices, words](const std::string& text) {
                 return ChoiceOf(choices, text) != nullptr ? ""
                                                           : InQuotes(text) + " is not one of " + Joined(words, ", ");
             }},
            word);
}

void PrintTotals(const std::vector<PlantTotal>& totals, const TotalsRequest& request, const UUIDTexts& labels)
{
    const auto* const group = ChoiceOf(Groups, request.By);
    const auto* const period = ChoiceOf(Periods, request.Per);
    const auto mean = [](const PlantFigures& figures) { return figures.Number > 0 ? Hundredths(figures.Mean) : ""; };
    std::vector<Row> rows;
    for (const PlantTotal& total : totals)
    {
        const auto label =
            group != nullptr && group->Chosen == PlantTotalGroup::Plant ? labels.find(total.Key) : labels.end();
        const std::string& name = label == labels.end() ? total.Name : label->second;
        rows.push_back({period != nullptr && total.Period.empty() ? "(no day)" : total.Period,
                        group != nullptr && name.empty() ? "(none)" : name, std::to_string(total.Feedings),
                        std::to_string(total.Waterings), SumText(total.AmountMl), SumText(total.RunoffMl),
                        mean(total.EC), mean(total.PH)});
    }
    PrintTable(std::cout,
               {{period != nullptr ? period->Heading : "", WhenNarrow::Keep},
                {group != nullptr ? group->Heading : "", WhenNarrow::Cut},
                {"Feedings", WhenNarrow::Drop, true},
                {"Waterings", WhenNarrow::Drop, true},
                {"Amount", WhenNarrow::Keep, true},
                {"Run-off", WhenNarrow::Drop, true},
                {"Mean EC", WhenNarrow::Drop, true},
                {"Mean pH", WhenNarrow::Drop, true}},
               rows);
}

std::vector<AnswerField<PlantTotal>> TotalFields()
{
    std::vector<AnswerField<PlantTotal>> fields = {
        {"Period", [](const PlantTotal& total) { return Exact(total.Period); }},
        {"Key", [](const PlantTotal& total) { return Exact(total.Key); }},
        {"Name", [](const PlantTotal& total) { return Exact(total.Name); }},
        {"Feedings", [](const PlantTotal& total) { return Exact(total.Feedings); }},
        {"Waterings", [](const PlantTotal& total) { return Exact(total.Waterings); }},
        {"AmountMl", [](const PlantTotal& total) { return Exact(total.AmountMl); }},
        {"RunoffMl", [](const PlantTotal& total) { return Exact(total.RunoffMl); }}};
    AddFigures(fields, "EC", &PlantTotal::EC);
    AddFigures(fields, "PH", &PlantTotal::PH);
    return fields;
}

void ShowTotals(Session& session, const TotalsRequest& request)
{
    const bool forPrograms = IsForPrograms(session, request.AsCSV);
    const std::vector<Plant> plants = AllPlants(session);
    PlantTotalFilter filter;
    filter.Plants = ListedPlantSet(session, plants, request.Plants);
    filter.To = LastDate(request.Plants);
    filter.From = FirstDate(request.Plants);
    if (const auto* const action = ChoiceOf(Actions, request.Action); action != nullptr)
        filter.Actions = {action->Chosen};
    if (const auto* const group = ChoiceOf(Groups, request.By); group != nullptr)
        filter.Group = group->Chosen;
    if (const auto* const period = ChoiceOf(Periods, request.Per); period != nullptr)
        filter.Period = period->Chosen;
    std::vector<PlantTotal> totals;
    session.RequireAnswer(QueryPlantTotals(session.ReadDatabase(), filter, totals));
    if (forPrograms)
        return PrintForPrograms(session, TotalFields(), totals);
    if (plants.empty())
        std::cout << NoPlantsYet;
    else if (totals.empty())
        std::cout << "No care entries match; `plantjournal care list` shows all care entries.\n";
    else
        PrintTotals(totals, request, PlantLabels(plants));
    PrintArchivedLeftOut(session, plants, request.Plants);
}

} // namespace

void AddTotalsCommand(CLI::App& program, Session& session)
{
    auto request = std::make_shared<TotalsRequest>();
    CLI::App& totals = AddCommand(
        program, "totals", "Add up the water and feed of plants, with the mean EC and pH",
        "totals --by tent --from 2025-03\ntotals --per week --action water\ntotals Basil --by product --per month",
        [&session, request] { ShowTotals(session, *request); });
    AddPlantNames(totals, request->Plants);
    AddChoice(totals, "--by", "a row for each of these", Groups, request->By);
    AddChoice(totals, "--per", "a row for each of these", Periods, request->Per);
    AddChoice(totals, "--action", "only care entries of this kind", Actions, request->Action);
    AddPlantOptions(totals, request->Plants);
    AddAllPlants(totals, "archived plants, too", request->Plants);
    AddPeriod(totals, request->Plants);
    AddCSV(totals, request->AsCSV);
}
