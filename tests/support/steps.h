#pragma once

#include "plant_database.h"
#include "support/model.h"
#include "testing/records.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace support
{

// Thrown where the library and the model differ. Tells every call that led there, and the difference.
struct Mismatch : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// A journal of the library's and a model of it, both empty at first, on which the same is done.
class SideBySide
{
  public:
    explicit SideBySide(std::string path = ":memory:");

    // Calls `operation` with the library's repository and with the model, each with arguments of its own, and compares
    // results, arguments and everything that can be read afterwards. The arguments come back as the library left them.
    template <typename Operation, typename... Arguments>
    auto Run(const std::string& name, const Operation& operation, Arguments&... arguments)
    {
        Begin(name, {Shown(arguments)...});
        const std::string today = PlantEventCurrentDate();
        std::tuple<std::remove_const_t<Arguments>...> modelArguments(arguments...);
        const auto result = operation(Library, arguments...);
        const auto runModel = [&](auto&... own)
        {
            (TakeOver(own, arguments, today), ...);
            const auto modelResult = operation(Model, own...);
            End(Shown(result));
            Compare("result", result, modelResult);
            (Compare("argument", arguments, own), ...);
        };
        std::apply(runModel, modelArguments);
        CompareAll();
        return result;
    }

    // Closes the file and opens it again.
    void Reopen();
    // What SQLite's own checks find in the file, and that nothing was left open in it.
    void CheckFile();

    const JournalModel& Expected() const { return Model; }

  private:
    void Begin(const std::string& name, const std::vector<std::string>& arguments);
    void End(const std::string& result);
    [[noreturn]] void Fail(const std::string& what, const std::string& library, const std::string& model) const;
    void CompareAll();
    template <typename Type>
    void CompareLists(bool (PlantRepository::*list)(const std::string&, std::vector<Type>&),
                      bool (JournalModel::*modelList)(const std::string&, std::vector<Type>&) const,
                      const std::string& plantUUID);

    template <typename Value> void Compare(const std::string& what, const Value& library, const Value& model) const
    {
        if (!Same(library, model))
            Fail(what, Shown(library), Shown(model));
    }

    template <typename Value> static bool Same(const Value& library, const Value& model) { return library == model; }
    static bool Same(const StrainSummary& library, const StrainSummary& model);

    // What the library made up, if it may have made it up, becomes what the model makes up.
    template <typename Value> void TakeOver(const Value&, const Value&, const std::string&) {}
    void TakeOver(const Plant& before, const Plant& after, const std::string& today);
    void TakeOver(const PlantPhoto& before, const PlantPhoto& after, const std::string& today);
    void TakeOver(const HarvestRecord& before, const HarvestRecord& after, const std::string& today);
    void TakeOverUUID(const std::string& before, const std::string& after);

    static std::string Shown(bool value);
    static std::string Shown(std::int64_t value);
    static std::string Shown(const std::string& text);
    template <Record Type> static std::string Shown(Type record)
    {
        const auto shorten = []<typename Field>(Field& field)
        {
            if constexpr (std::is_same_v<Field, std::string>)
                field = Shortened(field);
        };
        std::apply([&](auto&... fields) { (shorten(fields), ...); }, Fields(record));
        return Legible(Print(record));
    }
    template <Record Type> static std::string Shown(const std::vector<Type>& records)
    {
        std::string shown;
        for (const Type& record : records)
            shown += "\n      " + Shown(record);
        return shown.empty() ? "nothing" : shown;
    }
    static std::string Shortened(const std::string& text);
    static std::string Legible(const std::string& text);

    std::string Path;
    PlantDatabase Database;
    PlantRepository Library{Database};
    JournalModel Model;
    std::set<std::string> MadeUpUUIDs;
    std::vector<std::string> Calls;
};

// A random operation with random arguments, in a few bytes: the first chooses the operation, the others what it is
// called with. The more of them are 0, the plainer it is.
using Step = std::array<std::uint8_t, 16>;

// The steps that lie one after the other in `data`; what is missing at the end is 0.
std::vector<Step> StepsFrom(const std::uint8_t* data, std::size_t size);

// What was called in a step, and whether it returned true.
struct StepResult
{
    std::string Operation;
    bool Done;
};

// Takes the steps on an empty journal and its model. Throws Mismatch.
std::vector<StepResult> Take(const std::vector<Step>& steps);

// The names of all operations that a step may be.
std::set<std::string> OperationNames();

} // namespace support
