#include "web/engine/Desk.h"

#include <algorithm>
#include <cmath>

#include "host/parameters/SharedCatalog.h"

namespace Quorvan::Web {

Desk& Desk::Get() {
    static Desk desk;
    return desk;
}

Desk::Desk() {
    for (const Host::ParameterInfo& info : Host::SharedCatalog().All())
        positions.push_back(info.defaultPosition);
}

char* Desk::MakeRoom(size_t bytes) {
    room.resize(bytes);
    return room.data();
}

std::string_view Desk::Room(size_t bytes) const { return std::string_view(room).substr(0, bytes); }

float Desk::Position(uint32_t index) const {
    const float position = positions[index];
    return std::isfinite(position) ? std::clamp(position, 0.0f, 1.0f)
                                   : Host::SharedCatalog()[index].defaultPosition;
}

}  // namespace Quorvan::Web
