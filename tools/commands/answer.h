#pragma once

#include "command_line/parser.h"
#include "commands/print.h"
#include "plant_query.h"
#include "record/csv.h"

#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The answers of the commands that read across plants, as other programs read them: JSON and CSV with the same fields.

// One value. A value that is not known is null in JSON and empty in CSV.
struct ExactValue
{
    JSON InJSON;
    std::string InCSV;
};

ExactValue Exact(const std::string& text);
ExactValue Exact(std::int64_t number);
ExactValue Exact(double number);
ExactValue ExactlyNothing();
template <typename Number> ExactValue Exact(const std::optional<Number>& number)
{
    return number ? Exact(*number) : ExactlyNothing();
}

template <typename Answer> struct AnswerField
{
    std::string Name;
    std::function<ExactValue(const Answer&)> Value;
};

// Adds the number, mean, least and most of figures, in fields whose names begin with `name`.
template <typename Answer>
void AddFigures(std::vector<AnswerField<Answer>>& fields, const std::string& name, PlantFigures Answer::*figures)
{
    fields.push_back({name + "Number", [figures](const Answer& answer) { return Exact((answer.*figures).Number); }});
    for (const auto& [what, member] : {std::pair("Mean", &PlantFigures::Mean), std::pair("Least", &PlantFigures::Least),
                                       std::pair("Most", &PlantFigures::Most)})
        fields.push_back({name + what, [figures, member = member](const Answer& answer)
                          {
                              const PlantFigures& of = answer.*figures;
                              return of.Number > 0 ? Exact(of.*member) : ExactlyNothing();
                          }});
}

// Adds --csv. `asCSV` must live as long as the command.
void AddCSV(CLI::App& command, bool& asCSV);

// Whether --json or --csv was given. Throws an error in the command line where both were.
bool IsForPrograms(const Session& session, bool asCSV);

// Prints the answers as JSON, or else as CSV with a line of field names.
template <typename Answer>
void PrintForPrograms(const Session& session, const std::vector<AnswerField<Answer>>& fields,
                      const std::vector<Answer>& answers)
{
    JSON array = JSON::Array();
    std::vector<std::string> cells;
    cells.reserve(fields.size());
    for (const AnswerField<Answer>& field : fields)
        cells.push_back(field.Name);
    std::string lines;
    AppendCSVLine(lines, cells);
    for (const Answer& answer : answers)
    {
        JSON object = JSON::Object();
        cells.clear();
        for (const AnswerField<Answer>& field : fields)
        {
            ExactValue value = field.Value(answer);
            object.Add(field.Name, std::move(value.InJSON));
            cells.push_back(std::move(value.InCSV));
        }
        array.Add(std::move(object));
        AppendCSVLine(lines, cells);
    }
    if (session.AsJSON)
        PrintJSON(array);
    else
        std::cout << lines;
}

// What a journal without plants shows.
inline constexpr const char* NoPlantsYet = "No plants yet; `plantjournal plant add NAME` adds one.\n";
