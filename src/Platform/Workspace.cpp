#include "Platform/Workspace.h"

namespace orvanta {

Workspace::~Workspace() = default;

} // namespace orvanta
