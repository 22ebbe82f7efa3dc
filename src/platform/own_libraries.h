#pragma once

namespace quorin::platform {

// Makes Qt load its plugins from the folder of the library that contains this code, and loads
// OpenSSL from there, wherever the host program is. Does nothing on Linux, where the system's
// libraries are used. Call on the main thread after QCoreApplication has been created and before Qt
// loads a plugin.
void useOwnLibraries();

} // namespace quorin::platform
