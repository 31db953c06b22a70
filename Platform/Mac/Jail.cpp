// There is no interface here by which a program could confine itself that is not withdrawn.
#include "Platform/Jail.h"

const char* Jail::GetName(eLayer)
{
    return "";
}

std::vector<Jail::tState> Jail::Close(const tOrder&)
{
    return {};
}

bool Jail::WaitForOneThread(int)
{
    return true;
}

const std::vector<Jail::tAct>& Jail::GetActs()
{
    static const std::vector<tAct> sNone;
    return sNone;
}

bool Jail::TryAct(const std::string&, int& error)
{
    error = 0;
    return false;
}
