// The audio module: a Qt plugin whose factory makes outputs on the default device.
#include <QObject>

#include "platform/qt/sound_output.h"
#include "platform/qt/sound_plugin.h"

namespace zellick::qt {

class QtSoundPlugin : public QObject, public SoundOutputFactory {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID ZellickSoundOutputFactory_iid)
  Q_INTERFACES(zellick::qt::SoundOutputFactory)

 public:
  std::unique_ptr<SoundOutput> createOutput(Log& log) override {
    return std::make_unique<QtSoundOutput>(log);
  }
};

}  // namespace zellick::qt

#include "plugin.moc"
