// Selecting memory A, B or C.
#include "counter/ZellickViewController.h"
#include "internal.h"

namespace zellick {

namespace {

struct Selection {
  int id;
  const char* imageA;
  const char* imageB;
  const char* imageC;
  const char* trackerTag;
};

constexpr Selection kSelections[] = {
    {1, "a-down.png", "b-up.png", "c-up.png", "MemoryA"},
    {2, "a-up.png", "b-down.png", "c-up.png", "MemoryB"},
    {3, "a-up.png", "b-up.png", "c-down.png", "MemoryC"},
};

}  // namespace

void ZellickViewController::SelectMemoryA() { selectMemory(1); }
void ZellickViewController::SelectMemoryB() { selectMemory(2); }
void ZellickViewController::SelectMemoryC() { selectMemory(3); }

void ZellickViewController::selectMemory(int id) {
  const Selection& sel = kSelections[id - 1];
  Memory x = memory(id);

  buttonId = id;
  previousTotal = total;
  total = *x.count;
  hh = *x.hh;
  mm = *x.mm;
  ss = *x.ss;
  ShowOnLabel();
  ButtonA->setImage(sel.imageA);
  ButtonB->setImage(sel.imageB);
  ButtonC->setImage(sel.imageC);
  MemoryButtonPlayer();
  services_.tracker.Track(sel.trackerTag);
  Show();
  // The current memory cannot be selected again.
  ButtonA->setUserInteractionEnabled(id != 1);
  ButtonB->setUserInteractionEnabled(id != 2);
  ButtonC->setUserInteractionEnabled(id != 3);
  setLabelColors(*x.tick ? Color::White : Color::Gray);
}

void ZellickViewController::MemoryButtonPlayer() { playClick(detail::kMemorySound); }

}  // namespace zellick
