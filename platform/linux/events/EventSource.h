#pragma once

#include <systemd/sd-event.h>

#include <memory>

namespace quennel {

/// Owns one event source; letting go of it ends its callbacks at once.
struct DisableEventSource {
  void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};
using EventSource = std::unique_ptr<sd_event_source, DisableEventSource>;

}  // namespace quennel
