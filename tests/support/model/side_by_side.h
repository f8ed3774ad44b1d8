#pragma once

#include "plant_database.h"
#include "support/model/journal_model.h"
#include "testing/records.h"

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

// Thrown where the library and the model differ. The message has every call up to there, and the difference.
struct Mismatch : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// A journal of the library and a model of it, both empty at first. Every operation runs on both.
class SideBySide
{
  public:
    explicit SideBySide(std::string path = ":memory:");

    // Calls `operation` with the repository and with the model, each with its own copy of the arguments. Compares the
    // results, the arguments and everything that can be read afterwards. `arguments` are then as the library left them.
    template <typename Operation, typename... Arguments>
    auto Run(const std::string& name, const Operation& operation, Arguments&... arguments)
    {
        Begin(name, {Shown(arguments)...});
        const std::string today = PlantEventCurrentDate();
        std::tuple<std::remove_const_t<Arguments>...> modelArguments(arguments...);
        const auto result = operation(Library, arguments...);
        const auto runModel = [&](auto&... own)
        {
            (CopyGenerated(own, arguments, today), ...);
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
    // Runs SQLite's own checks of the file.
    void CheckFile();

    const JournalModel& Expected() const { return Model; }

  private:
    void Begin(const std::string& name, const std::vector<std::string>& arguments);
    void End(const std::string& result);
    [[noreturn]] void ThrowMismatch(const std::string& what, const std::string& library,
                                    const std::string& model) const;
    void CompareAll();
    template <typename Type>
    void CompareLists(bool (PlantRepository::*list)(const std::string&, std::vector<Type>&),
                      bool (JournalModel::*modelList)(const std::string&, std::vector<Type>&) const,
                      const std::string& plantUUID);

    template <typename Value> void Compare(const std::string& what, const Value& library, const Value& model) const
    {
        if (!Same(library, model))
            ThrowMismatch(what, Shown(library), Shown(model));
    }

    template <typename Value> static bool Same(const Value& library, const Value& model) { return library == model; }
    static bool Same(const StrainSummary& library, const StrainSummary& model);

    // Gives the model the values that the library generated: UUIDs, and the date of today.
    template <typename Value> void CopyGenerated(const Value&, const Value&, const std::string&) {}
    void CopyGenerated(const Plant& before, const Plant& after, const std::string& today);
    void CopyGenerated(const PlantPhoto& before, const PlantPhoto& after, const std::string& today);
    void CopyGenerated(const HarvestRecord& before, const HarvestRecord& after, const std::string& today);
    void CopyGeneratedUUID(const std::string& before, const std::string& after);

    static std::string Shown(bool value);
    static std::string Shown(std::int64_t value);
    static std::string Shown(const std::string& text);
    template <Record Type> static std::string Shown(Type record)
    {
        const auto shorten = []<typename Field>(Field& field)
        {
            if constexpr (std::is_same_v<Field, std::string>)
                field = Shorten(field);
        };
        std::apply([&](auto&... fields) { (shorten(fields), ...); }, Fields(record));
        return Printable(Print(record));
    }
    template <Record Type> static std::string Shown(const std::vector<Type>& records)
    {
        std::string shown;
        for (const Type& record : records)
            shown += "\n      " + Shown(record);
        return shown.empty() ? "nothing" : shown;
    }
    static std::string Shorten(const std::string& text);
    static std::string Printable(const std::string& text);

    std::string Path;
    PlantDatabase Database;
    PlantRepository Library{Database};
    JournalModel Model;
    std::set<std::string> GeneratedUUIDs;
    std::vector<std::string> Calls;
};

} // namespace support
