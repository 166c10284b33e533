#pragma once

#include "clap/plugin.h"

namespace Quorvan::Clap {

/// What hosts are told of the plug-in before they make one.
const clap_plugin_descriptor_t& Descriptor();

}  // namespace Quorvan::Clap
