#pragma once

#include "clap/plugin.h"

namespace Quorvan::Clap {

class ClapPlugin;

/// The interface's functions for one plug-in.
clap_plugin_t PluginFunctions(ClapPlugin* plugin);

}  // namespace Quorvan::Clap
