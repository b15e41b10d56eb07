#include "sim/simulation.h"

#include <algorithm>

#include "counter/interface.h"
#include "counter/sounds.h"

namespace zellick::sim {

namespace {

std::set<std::string> counterResources() {
  std::set<std::string> files;
  for (const char* sound : kCounterSounds) files.insert(std::string(sound) + "." + kSoundType);
  return files;
}

std::map<std::string, std::string> bundleFiles(const World& world) {
  if (world.options().seedList.empty()) return {};
  return {{std::string(kSeedListName) + "." + kSeedListType, world.options().seedList}};
}

double screenHeight(const World& world) {
  return std::max(world.options().screenHeight, kMinScreenHeight);
}

}  // namespace

const char* const SimOptions::kBundledSeedList = ZELLICK_SIM_SEED_LIST;

World::World(SimOptions options)
    : options_(options), clock_(time_, options.epoch), uptime_(time_), events_(time_) {}

Process::Process(World& world)
    : world_(world),
      runLoop_(world.time()),
      sound_(world.events()),
      bundle_(counterResources(), bundleFiles(world)),
      log_(world.events()),
      http_(runLoop_, world.network(), world.events()),
      tracker_({http_, world.defaults(), log_}, world.options().device,
               world.options().configuration.makerBaseUrl, world.events()),
      adConnect_({http_, runLoop_, notifications_, log_, world.options().device,
                  world.options().configuration}),
      application_(world.events()),
      apps_({http_, world.defaults(), world.documents(), bundle_, world.clock(), log_},
            world.options().configuration),
      host_({0, 0, kScreenWidth, screenHeight(world)}, runLoop_, world.events()),
      mail_(kMailComposerName, world.events()),
      screens_({host_, &mail_, application_, tracker_, apps_, log_, world.options().configuration}),
      events_(notifications_),
      screen_({0, 0, kScreenWidth, screenHeight(world)}, counterInterface(screenHeight(world)),
              world.events()) {
  CounterServices services{runLoop_,         world.clock(), world.uptime(), notifications_,
                           world.defaults(), sound_,        bundle_,        log_,
                           screen_.alerts(), screens_,      tracker_};
  controller_ = std::make_unique<ZellickViewController>(services, counterViews(screen_));
  bindCounter(screen_, *controller_);
  // Before the delegate's own observers, so the event comes before what they log.
  for (const char* name : {kAdConnectSuccess, kAdConnectFailed})
    notifications_.addObserver(name, [&events = world.events(), name] {
      events.record(std::string("notification ") + name);
    });
  delegate_ = std::make_unique<ZellickAppDelegate>(AppDelegateServices{
      application_, runLoop_, notifications_, world.defaults(), log_, screen_.alerts(), tracker_,
      world.options().configuration, adConnect_, [this] { apps_.updateApps(); }});
  delegate_->window = &window_;
  delegate_->viewController = controller_.get();
  mail_.setAvailable(world.mailAvailable);
  events_.setDelegate(delegate_.get());
  delegate_->applicationDidFinishLaunchingWithOptions();
  events_.didBecomeActive();
}

Process::~Process() {
  delegate_.reset();
  controller_.reset();
}

Process& Simulation::start() {
  if (!process_) process_ = std::make_unique<Process>(world_);
  return *process_;
}

Process& Simulation::restart() {
  process_.reset();
  return start();
}

}  // namespace zellick::sim
