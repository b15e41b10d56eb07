// The More screen's part of the scenario driver: its state and its commands.
#include <map>
#include <ostream>

#include "../src/parts.h"

namespace zellick::sim {

using nlohmann::ordered_json;

ordered_json moreState(Process& p) {
  fake::FakeScreen* screen = p.moreScreen();
  fake::FakeTableView* table = screen ? screen->tableView("pTblView") : nullptr;
  if (!table) return nullptr;
  ordered_json sections = ordered_json::array();
  ordered_json icons = ordered_json::array();
  const auto cells = table->cells();
  for (std::size_t s = 0; s < cells.size(); ++s) {
    ordered_json rows = ordered_json::array();
    for (const TableViewCell& cell : cells[s]) {
      rows.push_back(cell.text);
      if (static_cast<int>(s) == kAppsSection) icons.push_back(!cell.imageFile.empty());
    }
    sections.push_back(rows);
  }
  ordered_json composer = nullptr;
  if (const auto& m = p.mail().onScreen())
    composer = {{"to", m->toRecipients}, {"subject", m->subject}};
  ordered_json current = nullptr;
  if (const auto& row = screen->currentRow()) current = {row->section, row->row};
  return {{"sections", sections}, {"icons", icons}, {"current", current}, {"composer", composer}};
}

void defineMoreCommands(Driver& driver, Simulation& sim, std::ostream& out) {
  driver.define("select", "select SECTION ROW", 2, [&sim](const Driver::Args& a) -> std::string {
    fake::FakeScreen* screen = sim.process().moreScreen();
    if (!screen) return "the More screen is not on show";
    if (sim.process().mail().onScreen()) return {};  // the composer covers it
    int section = 0, row = 0;
    try {
      std::size_t used = 0;
      section = std::stoi(a[0], &used);
      if (used != a[0].size()) throw std::invalid_argument(a[0]);
      row = std::stoi(a[1], &used);
      if (used != a[1].size()) throw std::invalid_argument(a[1]);
    } catch (const std::exception&) {
      return "'" + a[0] + " " + a[1] + "' is not a section and a row";
    }
    if (!screen->tableView("pTblView")->select({section, row}))
      return "no row " + a[1] + " in section " + a[0];
    return {};
  });
  driver.define("back", "back", 0, [&sim](const Driver::Args&) -> std::string {
    fake::FakeScreen* screen = sim.process().moreScreen();
    if (!screen) return "the More screen is not on show";
    if (sim.process().mail().onScreen()) return {};
    fake::FakeNavigationBar* bar = screen->rootView()->navigationBar();
    if (!bar || !bar->tapBack()) return "the screen has no back button";
    return {};
  });
  driver.define("mail", "mail yes|no", 1, [&sim](const Driver::Args& a) -> std::string {
    if (a[0] != "yes" && a[0] != "no") return "'" + a[0] + "' is not yes or no";
    sim.world().mailAvailable = a[0] == "yes";
    sim.process().mail().setAvailable(sim.world().mailAvailable);
    return {};
  });
  driver.define("compose", "compose sent|saved|cancelled|failed", 1,
                [&sim](const Driver::Args& a) -> std::string {
                  static const std::map<std::string, MailComposeResult> results = {
                      {"sent", MailComposeResult::Sent},
                      {"saved", MailComposeResult::Saved},
                      {"cancelled", MailComposeResult::Cancelled},
                      {"failed", MailComposeResult::Failed}};
                  auto it = results.find(a[0]);
                  if (it == results.end()) return "'" + a[0] + "' is not a composer result";
                  if (!sim.process().mail().finish(it->second)) return "no mail composer on show";
                  return {};
                });
  driver.define("documents", "documents", 0, [&sim, &out](const Driver::Args&) {
    ordered_json files = ordered_json::object();
    for (const auto& [name, size] : sim.world().documents().contents()) files[name] = size;
    out << files.dump(-1, ' ', false, ordered_json::error_handler_t::replace) << '\n';
    return std::string();
  });
}

}  // namespace zellick::sim
