// What the system tells about itself.
#pragma once

/// Facts about system, machine and process. Texts lie in a static buffer of their function and are cut to it; empty or
/// 0 where nothing can be told.
class KVUSystem {
public:
    /// System version packed as hexadecimal digits (0x1015 for 10.15); asked once.
    static int GetOSVersion();

    /// Clock speed of the first processor in Hz; asked once.
    static int GetCPUSpeed();

    static const char* GetMachineName();

    /// Number and model of the processors, for people to read.
    static const char* GetCPUInfo();

    static const char* GetProcessName();
};
