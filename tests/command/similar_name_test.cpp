// Notices about names that are easily mistaken for existing ones.

#include "command/basil_test.h"

using namespace support;

namespace
{

class SimilarNameTest : public BasilTest
{
  protected:
    std::string NoticeOfPlant(const std::string& name) const
    {
        return NoticesOf({"plant", "add", name, "--uuid", "u-" + name});
    }
};

TEST_F(SimilarNameTest, ANameThatDiffersInOneLetterIsReported)
{
    const std::string inOneLetter = ": differs from the plant \"Basil\" in one letter; ";
    EXPECT_EQ(NoticeOfPlant("Basel"),
              "notice: plant \"Basel\"" + inOneLetter + "`plantjournal plant edit u-Basel --name NAME` renames it\n");
    NoticeOfPlant("Rue");
    EXPECT_NE(NoticeOfPlant("Roe").find(": differs from the plant \"Rue\" in one letter; "), std::string::npos);
    EXPECT_EQ(Parsed({"plant", "list"}).size(), 4U); // they are stored
    for (const char* name :
         {"Bassil", "Bail", "Baisl", "Absil", "bäsill"}) // inserted, removed, exchanged; another case
    {
        Done({"plant", "delete", "u-Basel", "--yes"});
        EXPECT_NE(NoticesOf({"plant", "add", name, "--uuid", "u-Basel"}).find(inOneLetter), std::string::npos) << name;
    }
}

TEST_F(SimilarNameTest, ANameThatDiffersInTwoLettersIsNotReported)
{
    for (const char* name : {"Bassill", "Bosel", "Bisal", "Baixl", "Baxsl", "Mint", "il"})
        EXPECT_EQ(NoticeOfPlant(name), "") << name;
}

TEST_F(SimilarNameTest, ANameThatDiffersInCaseOrAccentsIsReported)
{
    const std::string inCase = "differs from the plant \"Basil\" only in case or accents";
    EXPECT_NE(NoticeOfPlant("BASIL").find(inCase), std::string::npos);
    Done({"plant", "delete", "u-BASIL", "--yes"});
    EXPECT_NE(NoticeOfPlant("Básil").find(inCase), std::string::npos);
    Done({"plant", "add", "Τομάτα"});
    EXPECT_NE(NoticeOfPlant("τοματα").find("differs from the plant \"Τομάτα\" only in case or accents"),
              std::string::npos);
}

TEST_F(SimilarNameTest, AnEqualPlantNameIsReported)
{
    EXPECT_EQ(NoticesOf({"plant", "add", "Basil", "--uuid", "b2"}),
              "notice: plant \"Basil\": another plant has the same name; "
              "`plantjournal plant edit b2 --name NAME` renames it\n");
}

TEST_F(SimilarNameTest, TheClosestOfSeveralNamesIsReported)
{
    Done({"plant", "add", "Mint"});
    NoticesOf({"plant", "add", "Mont", "--uuid", "m2"});
    EXPECT_NE(NoticeOfPlant("mont").find("differs from the plant \"Mont\" only in case"), std::string::npos);
}

TEST_F(SimilarNameTest, NumbersOfPlantsAreNotReported)
{
    for (const char* name : {"Basil 1", "Basil 2", "Basil 12", "Basil 21", "Basil0", "Basil9"})
        EXPECT_EQ(NoticeOfPlant(name), "") << name;
    EXPECT_NE(NoticeOfPlant("Bail 2").find("differs from the plant \"Basil 2\" in one letter"), std::string::npos);
}

TEST_F(SimilarNameTest, LabelsOfOneOrTwoLettersAreReportedOnlyForTheirCase)
{
    for (const char* name : {"A", "B", "AB", "BB", "BBC", "XYZ", "XY", "ЖЯ", "ЖЮ"})
        EXPECT_EQ(NoticeOfPlant(name), "") << name;
    EXPECT_NE(NoticeOfPlant("a").find("only in case"), std::string::npos);
}

TEST_F(SimilarNameTest, AnEditIsReportedOnlyWhereItRenames)
{
    NoticesOf({"plant", "add", "Basel", "--uuid", "b2"});
    EXPECT_EQ(NoticesOf({"plant", "edit", "Basel", "--tent", "South"}), "");
    EXPECT_EQ(NoticesOf({"plant", "edit", "Basel", "--name", "Basel"}), "");
    EXPECT_EQ(NoticesOf({"plant", "edit", "Basel", "--name", "Mint"}), "");
    EXPECT_NE(NoticesOf({"plant", "edit", "Mint", "--name", "Bazil"}).find("differs from the plant \"Basil\""),
              std::string::npos);
}

TEST_F(SimilarNameTest, ADuplicateIsReported)
{
    EXPECT_EQ(NoticesOf({"plant", "duplicate", "Basil"}), "");
    EXPECT_NE(NoticesOf({"plant", "duplicate", "Basil"}).find("plant \"Basil copy\": another plant has the same name"),
              std::string::npos);
}

TEST_F(SimilarNameTest, ANewStrainOfAPlantIsReported)
{
    EXPECT_EQ(NoticesOf({"plant", "add", "Mint", "--uuid", "m1", "--strain", "Genovse"}),
              "notice: new strain \"Genovse\": differs from the strain \"Genovese\" in one letter; "
              "`plantjournal plant edit m1 --strain \"Genovese\"` corrects the plant, "
              "`plantjournal strain edit \"Genovse\" --name NAME` renames the strain\n");
    EXPECT_EQ(NoticesOf({"plant", "add", "Chives", "--strain", "Genovse"}), ""); // not new
    EXPECT_EQ(NoticesOf({"plant", "add", "Dill", "--strain", "Roma"}), "");
    EXPECT_NE(NoticesOf({"plant", "edit", "Dill", "--strain", "roma"}).find("only in case"), std::string::npos);
    EXPECT_EQ(NoticesOf({"plant", "edit", "Dill", "--strain", "Genovese"}), "");
}

TEST_F(SimilarNameTest, AStrainIsReportedWhereItIsNewOrRenamed)
{
    EXPECT_EQ(NoticesOf({"strain", "add", "genovese"}),
              "notice: strain \"genovese\": differs from the strain \"Genovese\" only in case or accents; "
              "`plantjournal strain edit \"genovese\" --name NAME` renames it\n");
    EXPECT_EQ(NoticesOf({"strain", "edit", "genovese", "--breeder", "who"}), "");
    EXPECT_EQ(NoticesOf({"strain", "edit", "genovese", "--name", "Roma"}), "");
    EXPECT_NE(NoticesOf({"strain", "edit", "Roma", "--name", "Genoveze"}).find("in one letter"), std::string::npos);
}

TEST_F(SimilarNameTest, AFailedWriteIsNotReported)
{
    EXPECT_EQ(Refused({"plant", "add", "Basel", "--uuid", "b1"}).find("notice"), std::string::npos);
    EXPECT_EQ(Refused({"strain", "add", "Genovese"}).find("notice"), std::string::npos);
}

} // namespace
