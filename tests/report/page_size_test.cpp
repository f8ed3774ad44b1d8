// Tests of the sizes of pages: a page can be mailed, whatever the journal.

#include "report/report_page.h"
#include "support/program.h"

#include <string>

using namespace support;

namespace
{

constexpr std::size_t Kilobyte = 1000;

class PageSizeTest : public ReportTest
{
  protected:
    // A thousand plants of 24 strains over ten years, with `entriesOfPlant` care entries each, and harvests, health
    // observations, notes and photos. The texts are as long as people write them.
    void StoreTenYears(int entriesOfPlant)
    {
        RunSQL("BEGIN;");
        RunSQL("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<999) INSERT INTO Plants(UUID,Name,"
               "Strain,Stage,SeedDate,FlipDate,HarvestDate,MotherPlantID) SELECT printf('plant-%04d',i),"
               "'Plant with a name '||i,'A strain with a name '||(i%24),'Harvested',"
               "date('2016-01-01','+'||(i*36/10)||' days'),date('2016-01-01','+'||(i*36/10+60)||' days'),"
               "date('2016-01-01','+'||(i*36/10+120)||' days'),CASE WHEN i%10>6 THEN i-4 END FROM n;");
        RunSQL("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<" +
               std::to_string(entriesOfPlant - 1) +
               ") INSERT INTO PlantCareEntries(PlantUUID,CareDate,Action,AmountMl,EC,PH) SELECT UUID,"
               "date(SeedDate,'+'||(i*120/" +
               std::to_string(entriesOfPlant) +
               ")||' days'),CASE i%3 WHEN 0 THEN 'Feed' ELSE 'Water' END,300+i*37%400,1.2+i*7%17*0.053,5.8+i%9*0.1 "
               "FROM Plants,n;");
        RunSQL("INSERT INTO HarvestRecords(PlantUUID,HarvestDate,WetWeightG,DryWeightG,QualityRating) "
               "SELECT UUID,HarvestDate,300+ID%200,60.5+ID%57,5+ID%5 FROM Plants;");
        RunSQL("INSERT INTO PlantHealthObservations(PlantUUID,ObservationDate,Issue,Severity,Treatment) SELECT UUID,"
               "date(FlipDate,'+'||(ID%30)||' days'),'Issue '||(ID%40),1+ID%5,'soap' FROM Plants;");
        RunSQL("INSERT INTO PlantPhotos(UUID,PlantUUID,PhotoDate,FilePath,Caption) SELECT 'photo-'||ID,UUID,FlipDate,"
               "'photos/2020/a directory/'||ID||'.jpg','a caption of some words' FROM Plants;");
        RunSQL("COMMIT;");
    }
};

TEST_F(PageSizeTest, ThePageOfTheDemonstrationHasAtMost300Kilobytes)
{
    const std::string journal = Scratch.File("season.db");
    ASSERT_EQ(RunProgram({PLANTJOURNAL_GREENHOUSE_SEASON, journal}).Status, 0);
    Database.Close();
    ASSERT_TRUE(Database.Open(journal));
    const ReportPage page = Page();
    EXPECT_LE(page.HTML().size(), 300 * Kilobyte);
    EXPECT_EQ(page.Sections(),
              (std::vector<std::string>{"stages", "care", "amounts", "measurements", "harvests", "years", "missing"}));
}

TEST_F(PageSizeTest, ThePageOfTenYearsHasAtMostThreeMegabytes)
{
    StoreTenYears(40);
    const ReportPage page = Page();
    EXPECT_LE(page.HTML().size(), 3000 * Kilobyte);
    EXPECT_EQ(page.Sections().size(), 9U);
    EXPECT_NE(page.HTML().find("1,000 plants, "), std::string::npos);
}

TEST_F(PageSizeTest, ThePageOfAPlantOfTenYearsHasAtMostThreeMegabytes)
{
    const Plant mother = Sown("Mother");
    RunSQL("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i<3649) INSERT INTO PlantJournalEntries"
           "(PlantUUID,EntryDate,Type,Details) SELECT '" +
           mother.UUID +
           "',date('2016-01-01','+'||i||' days'),"
           "'Observation',substr(replace(hex(zeroblob(2000)),'00','words '),1,5000) FROM n;");
    RunSQL("INSERT INTO PlantCareEntries(PlantUUID,CareDate,Action,AmountMl,EC,PH) SELECT PlantUUID,EntryDate,'Feed',"
           "500,1.5,6.1 FROM PlantJournalEntries;");
    EXPECT_LE(Page().HTML().size(), 3000 * Kilobyte);
}

} // namespace
