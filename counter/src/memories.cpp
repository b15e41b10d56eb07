// Selecting memory A, B or C.
#include "counter/ZellickViewController.h"
#include "internal.h"

namespace zellick {

namespace {

constexpr const char* kTrackerTags[] = {"MemoryA", "MemoryB", "MemoryC"};

}  // namespace

void ZellickViewController::SelectMemoryA() { selectMemory(1); }
void ZellickViewController::SelectMemoryB() { selectMemory(2); }
void ZellickViewController::SelectMemoryC() { selectMemory(3); }

void ZellickViewController::selectMemory(int id) {
  const detail::MemoryImages& images = detail::memoryImages(id);
  Memory x = memory(id);

  buttonId = id;
  previousTotal = total;
  total = *x.count;
  hh = *x.hh;
  mm = *x.mm;
  ss = *x.ss;
  ShowOnLabel();
  ButtonA->setImage(images.a);
  ButtonB->setImage(images.b);
  ButtonC->setImage(images.c);
  MemoryButtonPlayer();
  services_.tracker.Track(kTrackerTags[id - 1]);
  Show();
  // The current memory cannot be selected again.
  ButtonA->setUserInteractionEnabled(id != 1);
  ButtonB->setUserInteractionEnabled(id != 2);
  ButtonC->setUserInteractionEnabled(id != 3);
  setLabelColors(*x.tick ? Color::White : Color::Gray);
  stateChanged();
}

void ZellickViewController::MemoryButtonPlayer() { playClick(kMemorySound); }

}  // namespace zellick
