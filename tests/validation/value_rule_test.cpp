// The rules for values: each with the last value that passes and the first that does not.

#include "plant_validation.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace
{

const std::string Today = "2026-05-20";

// The problems as texts: the field, the kind and the reason.
using Findings = std::vector<std::string>;

Findings TextsOfRules(const std::vector<PlantProblem>& problems)
{
    Findings texts;
    for (const PlantProblem& problem : problems)
        texts.push_back(
            problem.Field +
            std::array{" refused: ", " impossible: ", " unlikely: "}.at(static_cast<std::size_t>(problem.Kind)) +
            problem.Description);
    return texts;
}

// The record with the texts that may not be empty.
template <typename Record> Record Complete(Record record)
{
    if constexpr (requires { record.PlantUUID; })
        record.PlantUUID = "plant";
    if constexpr (requires { record.FilePath; })
        record.FilePath = "leaf.jpg";
    if constexpr (requires { record.Issue; })
        record.Issue = "Aphids";
    if constexpr (requires { record.FloweringWeeks; })
        record.Name = "Genovese";
    return record;
}

template <typename Record> Findings FindingsOf(const Record& record, const Plant& plant = {})
{
    return TextsOfRules(Validate(Complete(record), plant, Today));
}

Findings FindingsOf(const Plant& plant)
{
    return TextsOfRules(Validate(plant, Today));
}

Findings FindingsOf(const Strain& strain)
{
    return TextsOfRules(Validate(Complete(strain)));
}

Plant Sown(const std::string& seedDate, const std::string& cloneDate = {})
{
    Plant plant;
    plant.SeedDate = seedDate;
    plant.CloneDate = cloneDate;
    return plant;
}

// Expects the rules for a number of a record: a lowest and a highest value, or infinity for none.
template <typename Record>
void ExpectRange(double Record::*member, const std::string& field, double least, double most, const std::string& reason)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Record record;
    const auto with = [&](double value)
    {
        record.*member = value;
        return FindingsOf(record);
    };
    EXPECT_EQ(with(least), Findings{}) << field;
    EXPECT_EQ(with(std::nextafter(least, -1.0)), Findings{field + " impossible: " + reason});
    if (std::isfinite(most))
    {
        EXPECT_EQ(with(most), Findings{}) << field;
        EXPECT_EQ(with(std::nextafter(most, infinity)), Findings{field + " impossible: " + reason});
    }
    for (const double value : {infinity, -infinity})
        EXPECT_EQ(with(value), Findings{field + " impossible: the number is not finite"}) << value;
    EXPECT_EQ(with(std::nan("")), Findings{field + " refused: the value is not a number"});
}

constexpr double NoLimit = std::numeric_limits<double>::infinity();

TEST(ValueRuleTest, ARecordWithOnlyTheMandatoryTextsHasNoProblems)
{
    EXPECT_EQ(FindingsOf(Strain{}), Findings{});
    EXPECT_EQ(FindingsOf(Plant{}), Findings{});
    EXPECT_EQ(FindingsOf(PlantEvent{}), Findings{});
    EXPECT_EQ(FindingsOf(PlantCareEntry{}), Findings{});
    EXPECT_EQ(FindingsOf(HarvestRecord{}), Findings{});
    EXPECT_EQ(FindingsOf(PlantPhoto{}), Findings{});
    EXPECT_EQ(FindingsOf(PlantHealthObservation{}), Findings{});
    EXPECT_EQ(FindingsOf(PlantJournalEntry{}), Findings{});
}

TEST(ValueRuleTest, NumbersHaveTheLimitsOfTheirKind)
{
    ExpectRange(&PlantCareEntry::AmountMl, "AmountMl", 0, NoLimit, "the amount cannot be negative");
    ExpectRange(&PlantCareEntry::EC, "EC", 0, NoLimit, "the EC cannot be negative");
    ExpectRange(&PlantCareEntry::PH, "PH", 0, 14, "the pH must be from 0 to 14");
    ExpectRange(&PlantCareEntry::RunoffMl, "RunoffMl", 0, NoLimit, "the runoff cannot be negative");
    ExpectRange(&HarvestRecord::WetWeightG, "WetWeightG", 0, NoLimit, "the wet weight cannot be negative");
    ExpectRange(&HarvestRecord::DryWeightG, "DryWeightG", 0, NoLimit, "the dry weight cannot be negative");
    ExpectRange(&HarvestRecord::QualityRating, "QualityRating", 0, 10, "the quality rating must be from 0 to 10");
    ExpectRange(&Plant::FlipHeightCm, "FlipHeightCm", 0, NoLimit, "the height cannot be negative");
    ExpectRange(&Plant::FinalHeightCm, "FinalHeightCm", 0, NoLimit, "the height cannot be negative");
}

TEST(ValueRuleTest, AnInfiniteNumberIsNotCompared)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    PlantCareEntry entry;
    entry.AmountMl = 1;
    entry.RunoffMl = infinity;
    EXPECT_EQ(FindingsOf(entry), Findings{"RunoffMl impossible: the number is not finite"});
    Plant plant;
    plant.FlipHeightCm = infinity;
    plant.FinalHeightCm = 1;
    EXPECT_EQ(FindingsOf(plant), Findings{"FlipHeightCm impossible: the number is not finite"});
}

TEST(ValueRuleTest, CountsAreNotNegative)
{
    Strain strain;
    strain.FloweringWeeks = -1;
    EXPECT_EQ(FindingsOf(strain), Findings{"FloweringWeeks impossible: the flowering time cannot be negative"});
    HarvestRecord record;
    record.SeedYield = -1;
    EXPECT_EQ(FindingsOf(record), Findings{"SeedYield impossible: the number of seeds cannot be negative"});
    record.SeedYield = std::numeric_limits<int>::max();
    EXPECT_EQ(FindingsOf(record), Findings{});
}

TEST(ValueRuleTest, ASeverityIsFrom1To5)
{
    PlantHealthObservation observation;
    for (const int severity : {1, 2, 3, 4, 5})
    {
        observation.Severity = severity;
        EXPECT_EQ(FindingsOf(observation), Findings{});
    }
    for (const int severity : {-1, 0, 6})
    {
        observation.Severity = severity;
        EXPECT_EQ(FindingsOf(observation), Findings{"Severity impossible: the severity must be from 1 to 5"});
    }
}

// Sets each date of each kind of record to `date` and calls `check` with the name of the field and the findings.
template <typename Check> void ForEachDate(const std::string& date, const Plant& of, const Check& check)
{
    for (const auto& [member, field] : {std::pair(&Plant::SeedDate, "SeedDate"),
                                        {&Plant::CloneDate, "CloneDate"},
                                        {&Plant::TransplantDate, "TransplantDate"},
                                        {&Plant::FlipDate, "FlipDate"},
                                        {&Plant::HarvestDate, "HarvestDate"}})
    {
        Plant plant;
        plant.*member = date;
        check(field, FindingsOf(plant));
    }
    const auto checkRecord = [&](auto record, auto member, const char* field)
    {
        record.*member = date;
        check(field, FindingsOf(record, of));
    };
    checkRecord(PlantEvent{}, &PlantEvent::EventDate, "EventDate");
    checkRecord(PlantCareEntry{}, &PlantCareEntry::CareDate, "CareDate");
    checkRecord(HarvestRecord{}, &HarvestRecord::HarvestDate, "HarvestDate");
    checkRecord(PlantPhoto{}, &PlantPhoto::PhotoDate, "PhotoDate");
    checkRecord(PlantHealthObservation{}, &PlantHealthObservation::ObservationDate, "ObservationDate");
    checkRecord(PlantJournalEntry{}, &PlantJournalEntry::EntryDate, "EntryDate");
}

TEST(ValueRuleTest, EveryDateIsOneOfThreeFormsOrEmpty)
{
    int dates = 0;
    for (const char* date : {"", "2026", "2026-05", "2026-05-20"})
        ForEachDate(date, {},
                    [&](const std::string& field, const Findings& findings)
                    {
                        EXPECT_EQ(findings, Findings{}) << field << ' ' << date;
                        ++dates;
                    });
    EXPECT_EQ(dates, 4 * 11);
    ForEachDate("2026-02-29", {},
                [](const std::string& field, const Findings& findings)
                {
                    EXPECT_EQ(findings, Findings{field + " impossible: the text is not a date; write YYYY-MM-DD, "
                                                         "YYYY-MM or YYYY"});
                });
}

TEST(ValueRuleTest, ADateInTheFutureIsUnlikely)
{
    for (const char* date : {"2026-05-21", "2026-06", "2027"})
        ForEachDate(date, {},
                    [](const std::string& field, const Findings& findings)
                    { EXPECT_EQ(findings, Findings{field + " unlikely: the date is in the future"}); });
}

TEST(ValueRuleTest, ADateBeforeThePlantBeganIsUnlikely)
{
    const auto expect = [](const Plant& plant, const std::string& date, const std::string& reason)
    {
        PlantCareEntry entry;
        entry.CareDate = date;
        EXPECT_EQ(FindingsOf(entry, plant), reason.empty() ? Findings{} : Findings{"CareDate unlikely: " + reason});
    };
    const std::string sown = "the date is before the plant was sown ";
    const std::string cut = "the date is before the plant was cut as a clone ";
    expect(Sown("2026-05-01"), "2026-05-01", "");
    expect(Sown("2026-05-01"), "2026-04-30", sown + "(2026-05-01)");
    expect(Sown("2026-05-01"), "2026-05", "");
    expect(Sown("2026-05-01"), "2026", "");
    expect(Sown("2026-05"), "2026-05-01", "");
    expect(Sown("2026-05"), "2026-04-30", sown + "(2026-05)");
    expect(Sown("2026"), "2025-12-31", sown + "(2026)");
    expect(Sown("spring"), "2025-12-31", "");
    expect(Sown("", "2026-05-01"), "2026-04-30", cut + "(2026-05-01)");
    expect(Sown("", "2026-05-01"), "2026-05-01", "");
    expect(Sown("2026-05-01", "2026-05-10"), "2026-05-05", "");
    expect(Sown("2026-05-10", "2026-05-01"), "2026-05-05", "");
    expect(Sown("2026-05-10", "2026-05-01"), "2026-04-30", sown + "(2026-05-10)");
    expect(Sown("spring", "2026-05-01"), "2026-04-30", cut + "(2026-05-01)");
    expect(Sown("2026-05-01", "spring"), "2026-04-30", sown + "(2026-05-01)");

    int records = 0;
    ForEachDate("2026-04-30", Sown("2026-05-01"),
                [&](const std::string& field, const Findings& findings)
                {
                    if (findings.empty()) // a date of a plant
                        return;
                    EXPECT_EQ(findings, Findings{field + " unlikely: " + sown + "(2026-05-01)"});
                    ++records;
                });
    EXPECT_EQ(records, 6);
}

TEST(ValueRuleTest, TheDatesOfAPlantAreInTheirOrder)
{
    const auto findingsWith = [](std::string Plant::*member, const std::string& date, const Plant& plant)
    {
        Plant changed = plant;
        changed.*member = date;
        return FindingsOf(changed);
    };
    for (const auto& [member, field] : {std::pair(&Plant::TransplantDate, "TransplantDate"),
                                        {&Plant::FlipDate, "FlipDate"},
                                        {&Plant::HarvestDate, "HarvestDate"}})
    {
        const std::string unlikely = std::string(field) + " unlikely: the date is before ";
        EXPECT_EQ(findingsWith(member, "2026-05-01", Sown("2026-05-01")), Findings{});
        EXPECT_EQ(findingsWith(member, "2026", Sown("2026-05-01")), Findings{});
        EXPECT_EQ(findingsWith(member, "2026-04", Sown("2026-05-01")), Findings{unlikely + "the sowing (2026-05-01)"});
        EXPECT_EQ(findingsWith(member, "2026-04-30", Sown("", "2026-05-01")),
                  Findings{unlikely + "the cutting of the clone (2026-05-01)"});
    }
    Plant flipped;
    flipped.FlipDate = "2026-05-01";
    EXPECT_EQ(findingsWith(&Plant::HarvestDate, "2026-05-01", flipped), Findings{});
    EXPECT_EQ(findingsWith(&Plant::HarvestDate, "2026-04-30", flipped),
              Findings{"HarvestDate unlikely: the date is before the flip to flower (2026-05-01)"});
    HarvestRecord record;
    record.HarvestDate = "2026-05-01";
    EXPECT_EQ(FindingsOf(record, flipped), Findings{});
    record.HarvestDate = "2026-04-30";
    EXPECT_EQ(FindingsOf(record, flipped),
              Findings{"HarvestDate unlikely: the date is before the flip to flower (2026-05-01)"});
}

TEST(ValueRuleTest, LargeAmountsAndTheECOfOtherUnitsAreUnlikely)
{
    PlantCareEntry entry;
    entry.AmountMl = 100'000;
    entry.RunoffMl = 100'000;
    entry.EC = 20;
    EXPECT_EQ(FindingsOf(entry), Findings{});
    entry.AmountMl = 100'001;
    entry.RunoffMl = 100'000.5;
    entry.EC = 20.1;
    EXPECT_EQ(FindingsOf(entry), (Findings{"AmountMl unlikely: the amount is above 100 l; the journal expects ml",
                                           "EC unlikely: the EC is above 20; the journal expects mS/cm",
                                           "RunoffMl unlikely: the runoff is above 100 l; the journal expects ml"}));
}

TEST(ValueRuleTest, ARunoffAboveTheAmountIsUnlikely)
{
    PlantCareEntry entry;
    entry.RunoffMl = 500;
    EXPECT_EQ(FindingsOf(entry), Findings{}); // the amount is not known
    entry.AmountMl = 500;
    EXPECT_EQ(FindingsOf(entry), Findings{});
    entry.AmountMl = 499;
    EXPECT_EQ(FindingsOf(entry), Findings{"RunoffMl unlikely: the runoff is above the amount given"});
}

TEST(ValueRuleTest, ADryWeightAboveTheWetWeightIsUnlikely)
{
    HarvestRecord record;
    record.DryWeightG = 100;
    EXPECT_EQ(FindingsOf(record), Findings{}); // the wet weight is not known
    record.WetWeightG = 100;
    EXPECT_EQ(FindingsOf(record), Findings{});
    record.WetWeightG = 99.9;
    EXPECT_EQ(FindingsOf(record), Findings{"DryWeightG unlikely: the dry weight is above the wet weight"});
}

TEST(ValueRuleTest, AFinalHeightBelowTheFlipHeightIsUnlikely)
{
    Plant plant;
    plant.FlipHeightCm = 40;
    EXPECT_EQ(FindingsOf(plant), Findings{}); // the final height is not known
    plant.FinalHeightCm = 40;
    EXPECT_EQ(FindingsOf(plant), Findings{});
    plant.FinalHeightCm = 39.9;
    EXPECT_EQ(FindingsOf(plant), Findings{"FinalHeightCm unlikely: the final height is below the height at the flip"});
}

TEST(ValueRuleTest, AFloweringTimeAbove52WeeksIsUnlikely)
{
    Strain strain;
    strain.FloweringWeeks = 52;
    EXPECT_EQ(FindingsOf(strain), Findings{});
    strain.FloweringWeeks = 53;
    EXPECT_EQ(FindingsOf(strain), Findings{"FloweringWeeks unlikely: the flowering time is above 52 weeks"});
}

TEST(ValueRuleTest, AProblemOfTwoFieldsNamesTheOther)
{
    PlantCareEntry entry;
    entry.AmountMl = 1;
    entry.RunoffMl = 2;
    EXPECT_EQ(Validate(Complete(entry), {}, Today).at(0).OtherField, "AmountMl");
    HarvestRecord record;
    record.WetWeightG = 1;
    record.DryWeightG = 2;
    EXPECT_EQ(Validate(Complete(record), {}, Today).at(0).OtherField, "WetWeightG");
    Plant plant;
    plant.FlipHeightCm = 2;
    plant.FinalHeightCm = 1;
    EXPECT_EQ(Validate(plant, Today).at(0).OtherField, "FlipHeightCm");
    plant = Sown("2026-05-03", "2026-05-02");
    plant.FlipDate = "2026-05-01";
    EXPECT_EQ(Validate(plant, Today).at(0).OtherField, "SeedDate");
    EXPECT_EQ(Validate(plant, Today).at(1).OtherField, "CloneDate");
    plant = {};
    plant.FlipDate = "2026-05-02";
    plant.HarvestDate = "2026-05-01";
    EXPECT_EQ(Validate(plant, Today).at(0).OtherField, "FlipDate");
    record = {};
    record.HarvestDate = "2026-05-01"; // compared with a date of another record
    EXPECT_EQ(Validate(Complete(record), plant, Today).at(0).OtherField, "");
}

} // namespace
