#pragma once

#include "support/model/choices.h"
#include "support/model/journal_model.h"
#include "testing/records.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace support
{

// Where a random record comes from: it is new, in the file, or as an earlier call returned it.
enum class RecordSource
{
    New,
    File,
    EarlierCall
};

// Makes the arguments of the operations on a journal. Many name records that the journal has.
class RandomArguments
{
  public:
    explicit RandomArguments(const JournalModel& model) : Model(model) {}

    std::string PlantUUID(Choices& choices) const;

    // The row ID of a stored record, or another number.
    template <typename Type> std::int64_t SomeID(Choices& choices)
    {
        const std::vector<Type> records = RecordsInFile<Type>();
        const std::uint8_t choice = choices.Next();
        return choice < 192 && !records.empty() ? records[choice % records.size()].ID : RowID(choices);
    }

    // A record, most often from that source, with up to three changed fields.
    template <typename Type> Type Some(RecordSource mostly, Choices& choices)
    {
        const std::uint8_t choice = choices.Next() % 8;
        const RecordSource others[] = {RecordSource::New, RecordSource::File, RecordSource::EarlierCall};
        Type record = From<Type>(choice < 5 ? mostly : others[choice - 5], choices);
        constexpr std::size_t count = std::tuple_size_v<decltype(Fields(record))>;
        for (int change = 0; change < 3; ++change)
        {
            const std::uint8_t place = choices.Next();
            if (place < 160)
                continue;
            std::size_t index = 0;
            const auto setIfChosen = [&](auto& field)
            {
                if (index++ == place % count)
                    Set(field, choices);
            };
            std::apply([&](auto&... fields) { (setIfChosen(fields), ...); }, Fields(record));
        }
        return record;
    }

    // The last records of a type that calls returned, whether or not they stored them.
    template <typename Type> std::vector<Type>& Returned() { return std::get<std::vector<Type>>(ReturnedRecords); }

    template <Record Type> void Remember(const Type& record)
    {
        std::vector<Type>& returned = Returned<Type>();
        if (returned.size() == 8)
            returned.erase(returned.begin());
        returned.push_back(record);
    }
    template <typename Other> void Remember(const Other&) {}
    void Remember(const StrainSummary&) {}

  private:
    template <typename Type> Type From(RecordSource source, Choices& choices)
    {
        std::vector<Type> records;
        if (source == RecordSource::File)
            records = RecordsInFile<Type>();
        else if (source == RecordSource::EarlierCall)
            records = Returned<Type>();
        if (!records.empty())
            return records[choices.Next() % records.size()];
        Type record;
        Fill(record, choices);
        return record;
    }

    // By row ID: the order of a list may depend on generated UUIDs, which differ in every run.
    template <typename Type> std::vector<Type> RecordsInFile() const
    {
        std::vector<Type> records = ListAll(Type{});
        std::sort(records.begin(), records.end(), [](const Type& l, const Type& r) { return l.ID < r.ID; });
        return records;
    }

    std::vector<Plant> ListAll(const Plant&) const;
    std::vector<Strain> ListAll(const Strain&) const;
    std::vector<PlantEvent> ListAll(const PlantEvent&) const;
    std::vector<PlantCareEntry> ListAll(const PlantCareEntry&) const;
    std::vector<HarvestRecord> ListAll(const HarvestRecord&) const;
    std::vector<PlantPhoto> ListAll(const PlantPhoto&) const;
    std::vector<PlantHealthObservation> ListAll(const PlantHealthObservation&) const;
    std::vector<PlantJournalEntry> ListAll(const PlantJournalEntry&) const;

    static std::string Date(Choices& choices);
    static double Real(Choices& choices);
    static std::int64_t RowID(Choices& choices);
    std::string Text(Choices& choices) const;
    std::string StrainName(Choices& choices) const;

    void Set(std::string& field, Choices& choices) const;
    void Set(std::int64_t& field, Choices& choices) const;
    void Set(double& field, Choices& choices) const;
    void Set(int& field, Choices& choices) const;
    template <typename Enum>
    requires std::is_enum_v<Enum>
    void Set(Enum& field, Choices& choices) const
    {
        constexpr std::array values{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, -1, INT_MIN, INT_MAX, 256};
        field = static_cast<Enum>(choices.OneOf(values));
    }

    // Fills a new record so that its create succeeds if all choices are 0 and there is a plant.
    void Fill(Plant& p, Choices& choices) const;
    void Fill(Strain& s, Choices& choices) const;
    void Fill(PlantEvent& e, Choices& choices) const;
    void Fill(PlantCareEntry& e, Choices& choices) const;
    void Fill(HarvestRecord& r, Choices& choices) const;
    void Fill(PlantPhoto& p, Choices& choices) const;
    void Fill(PlantHealthObservation& o, Choices& choices) const;
    void Fill(PlantJournalEntry& e, Choices& choices) const;

    const JournalModel& Model;
    mutable bool HadMegabyte = false; // one such text is enough: operations copy it, and it slows down all that follow
    std::tuple<std::vector<Plant>, std::vector<Strain>, std::vector<PlantEvent>, std::vector<PlantCareEntry>,
               std::vector<HarvestRecord>, std::vector<PlantPhoto>, std::vector<PlantHealthObservation>,
               std::vector<PlantJournalEntry>>
        ReturnedRecords;
};

} // namespace support
