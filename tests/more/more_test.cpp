// The More screen over the counter, on the deterministic platform. What each row opens and
// records is pinned by the "more" scenario script.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "more/moreView.h"
#include "sim/simulation.h"

namespace zellick::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

DefaultsValue entry(const char* name, const char* appleid) {
  return DefaultsDictionary{{kAppIdKey, 1LL},
                            {kAppNameKey, std::string(name)},
                            {kAppleIdKey, std::string(appleid)},
                            {kPriorityKey, 1LL}};
}

class MoreTest : public ::testing::Test {
 protected:
  // The counter with `cached` as the catalogue (none: the seed list fills it), and the More
  // screen opened over it.
  void open(std::optional<DefaultsArray> cached) {
    if (cached) sim.world().store().setObject(kMoreAppsKey, *cached);
    sim.start();
    sim.wait(1);
    sim.world().events().takeNew();
    ASSERT_EQ(p().tap("ButtonInfo"), fake::InputResult::Done);
    ASSERT_NE(p().moreScreen(), nullptr);
    ASSERT_THAT(outside(), ElementsAre("track Info", "present moreViewController"));
  }
  sim::Process& p() { return sim.process(); }
  fake::FakeTableView& table() { return *p().moreScreen()->tableView("pTblView"); }
  std::vector<std::string> texts(int section) {
    std::vector<std::string> out;
    const auto cells = table().cells();
    for (const TableViewCell& c : cells[section]) out.push_back(c.text);
    return out;
  }
  // What reached the outside: records, pages opened, screens come and gone.
  std::vector<std::string> outside() {
    std::vector<std::string> out;
    for (const std::string& e : sim.world().events().takeNew()) {
      const std::string what = e.substr(e.find(' ') + 1);
      for (const char* kind : {"track ", "open ", "present ", "dismiss "})
        if (what.starts_with(kind)) out.push_back(what);
    }
    return out;
  }

  sim::Simulation sim;
};

TEST_F(MoreTest, ShowsFeedbackRowsAndTheCatalogueWithTheIconsOnDisk) {
  sim.world().documents().writeAtomically("12@2x.png", "PNG");
  open(DefaultsArray{entry("Has icon", "12"), entry("None yet", "13"), std::string("junk"),
                     DefaultsDictionary{{kAppNameKey, 5LL}, {kAppleIdKey, 14LL}}});
  EXPECT_THAT(texts(0),
              ElementsAre("Email Comments", "Review Zellick", "Like Orvanta on Facebook"));
  EXPECT_THAT(texts(1), IsEmpty());
  // Entries a hand-edited store spoiled show what they have.
  EXPECT_THAT(texts(2), ElementsAre("Has icon", "None yet", "", "5"));
  std::vector<std::string> pictures;
  for (const auto& section : table().cells())
    for (const TableViewCell& c : section) {
      pictures.push_back(c.image + "|" + c.imageFile);
      EXPECT_EQ(c.backgroundColor, Color::Black);
      EXPECT_EQ(c.textColor, Color::White);
    }
  EXPECT_THAT(pictures, ElementsAre("EmailComments.png|", "Review.png|", "FacebookLike.png|",
                                    "|documents/12@2x.png", "|", "|", "|"));

  const TableHeaderView& header = table().header();
  ASSERT_EQ(header.labels.size(), 2u);
  EXPECT_EQ(header.frame, (Rect{0, 0, 320, 40}));
  EXPECT_EQ(header.labels[1].text, "Other Orvanta Apps");
  EXPECT_EQ(header.labels[1].frame, (Rect{18, 185, 320, 40}));
  EXPECT_EQ(header.labels[0].font, (Font{kBoldSystemFontName, 17}));
  fake::FakeNavigationBar& bar = *p().moreScreen()->rootView()->navigationBar();
  EXPECT_EQ(bar.frame(), (Rect{0, 0, 320, 45}));
  EXPECT_EQ(bar.items().back().title, "More");
  EXPECT_EQ(bar.backTitle(), "Back");

  // The list was read when the screen loaded; an icon that arrives since shows when its row is
  // drawn again, and the counter underneath takes no touches.
  sim.world().documents().writeAtomically("13@2x.png", "PNG");
  sim.world().store().setObject(kMoreAppsKey, DefaultsArray{});
  EXPECT_EQ(table().cells()[2][1].imageFile, "documents/13@2x.png");
  EXPECT_EQ(texts(2).size(), 4u);
  EXPECT_EQ(p().tap("ButtonAdd"), fake::InputResult::Ignored);
}

TEST_F(MoreTest, TheSeedListFillsAFirstOpeningAndAnEmptyListLeavesSectionTwoEmpty) {
  open(std::nullopt);
  EXPECT_THAT(texts(2), ElementsAre("Lap Timer", "Score Keeper", "Pocket Metronome", "Tide Clock"));
  sim.restart();
  sim.world().store().setObject(kMoreAppsKey, DefaultsArray{});
  ASSERT_EQ(p().tap("ButtonInfo"), fake::InputResult::Done);
  EXPECT_THAT(texts(2), IsEmpty());
  EXPECT_EQ(texts(0).size(), 3u);
}

TEST_F(MoreTest, AComposerOpensWhereMailCanBeSentAndGoesWhateverItsResult) {
  open(DefaultsArray{});
  p().mail().setAvailable(true);
  for (auto result : {MailComposeResult::Sent, MailComposeResult::Saved,
                      MailComposeResult::Cancelled, MailComposeResult::Failed}) {
    table().select({0, 0});
    ASSERT_TRUE(p().mail().onScreen());
    EXPECT_THAT(p().mail().onScreen()->toRecipients, ElementsAre("support@orvanta.example"));
    EXPECT_EQ(p().mail().onScreen()->subject, "Zellick Comments");
    EXPECT_TRUE(p().mail().finish(result));
    EXPECT_THAT(outside(), ElementsAre("present MFMailComposeViewController",
                                       "dismiss MFMailComposeViewController"));
    EXPECT_EQ(table().indexPathForSelectedRow(), std::nullopt);
  }
}

TEST_F(MoreTest, BackDismissesTheScreenAndTheBarKeepsItsItems) {
  open(DefaultsArray{});
  fake::FakeNavigationBar& bar = *p().moreScreen()->rootView()->navigationBar();
  ASSERT_TRUE(bar.tapBack());
  EXPECT_EQ(bar.items().size(), 2u);
  EXPECT_THAT(outside(), ElementsAre("dismiss moreViewController"));
  sim.wait(0.1);
  EXPECT_EQ(p().more(), nullptr);
  EXPECT_EQ(p().tap("ButtonInfo"), fake::InputResult::Done);
  EXPECT_THAT(outside(), Contains("present moreViewController"));
}

}  // namespace
}  // namespace zellick::test
