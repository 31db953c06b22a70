#include "KVUSystem/KVUSystem.h"

#include "KVUStr/KVUStr.h"
#include "Platform/System.h"

int KVUSystem::GetOSVersion()
{
    static const int sVersion = Platform::SystemVersion();
    return sVersion;
}

int KVUSystem::GetCPUSpeed()
{
    static const int sSpeed = Platform::ProcessorSpeed();
    return sSpeed;
}

const char* KVUSystem::GetMachineName()
{
    static char sName[256];
    KVUStr::strncpy(sName, Platform::MachineName().c_str(), sizeof sName);
    return sName;
}

const char* KVUSystem::GetCPUInfo()
{
    static char sInfo[256];
    KVUStr::strncpy(sInfo, Platform::ProcessorDescription().c_str(), sizeof sInfo);
    return sInfo;
}

const char* KVUSystem::GetProcessName()
{
    static char sName[256];
    KVUStr::strncpy(sName, Platform::ProcessName().c_str(), sizeof sName);
    return sName;
}
