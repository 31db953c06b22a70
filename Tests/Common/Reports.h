// What the core reports during a test.
#pragma once

#include "Platform/Alert.h"
#include "Platform/Report.h"

#include <string>
#include <utility>
#include <vector>

/// Records messages and alerts while it lives; alerts do not reach standard error then.
class CReports {
public:
    struct tAlert {
        unsigned long level;
        std::string title;
        std::string text;
    };

    CReports()
    {
        Platform::SetReportObserver(
            [](void* self, Platform::eReportLevel level, const char* text) {
                static_cast<CReports*>(self)->mMessages.emplace_back(level, text);
            },
            this);
        Platform::SetAlertHandler(
            [](void* self, unsigned long level, const char* title, const char* text) {
                static_cast<CReports*>(self)->mAlerts.push_back({level, title, text});
            },
            this);
    }
    ~CReports()
    {
        Platform::SetReportObserver(nullptr, nullptr);
        Platform::SetAlertHandler(nullptr, nullptr);
    }
    CReports(const CReports&) = delete;
    CReports& operator=(const CReports&) = delete;

    std::vector<std::pair<Platform::eReportLevel, std::string>> mMessages;
    std::vector<tAlert> mAlerts;
};
