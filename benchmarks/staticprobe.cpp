// Brings the probe into a program that can load no plugin.
#include <QtPlugin>

Q_IMPORT_PLUGIN(FrameProbePlugin)
