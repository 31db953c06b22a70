#include "CBundle/CBundle.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Platform/System.h"
#include "Reports.h"
#include "support/Fatal.h"
#include "support/Files.h"

#include <CoreFoundation/CoreFoundation.h>

#include <climits>
#include <sys/utsname.h>

using Platform::eReportLevel;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Pair;

namespace {
const std::string kSeparator = std::string(60, '=') + "\n";

/// Gives each test an empty logs folder.
class CErrReports : public testing::Test {
protected:
    CErrReports()
    {
        std::filesystem::remove_all(mFolder);
        std::filesystem::create_directories(mFolder);
    }

    std::string Log() const
    {
        const std::string path = mFolder + "/Velmora.error.log";
        return std::filesystem::exists(path) ? ReadFile(path) : "";
    }

    const std::string mFolder = std::string(getenv("XDG_STATE_HOME")) + "/velmora";
};

/// For death tests, whose child can only tell by its standard error: "ALERT LEVEL".
void PrintAlert(void* /*context*/, unsigned long level, const char* /*title*/, const char* /*text*/)
{
    fprintf(stderr, "ALERT %lu", level);
}
} // namespace

TEST_F(CErrReports, MinorErrorWritesLogsShowsAndGoesOn)
{
    CReports reports;
    testing::internal::CaptureStderr();
    EXPECT_EQ(CErr::CheckError(0, "x"), 0);
    EXPECT_FALSE(CErr::MinorError(0, "f", "x"));
    EXPECT_TRUE(CErr::MinorError(SHRT_MIN, "f", ""));
    EXPECT_TRUE(CErr::MinorError(1, "f", nullptr));
    EXPECT_EQ(Log(), "") << "no error, or none worth a word";
    EXPECT_TRUE(CErr::MinorError(5, "x"));
    const std::string message = " Function    :  ???\n Error Code  :  5\n Description :  x\n\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
    EXPECT_THAT(reports.mMessages, ElementsAre(Pair(eReportLevel::kMinorError, message)));
    ASSERT_EQ(reports.mAlerts.size(), 1u);
    EXPECT_EQ(reports.mAlerts[0].level, static_cast<unsigned long>(kCFUserNotificationCautionAlertLevel));
    EXPECT_EQ(reports.mAlerts[0].title, "An application error has occured.");
    EXPECT_EQ(reports.mAlerts[0].text, message);

    const std::string log = Log();
    const size_t lineEnd = log.find('\n');
    EXPECT_THAT(log.substr(0, lineEnd),
                MatchesRegex("[A-Z][a-z]{2} [ 1-3][0-9]\\. [0-9]{4}, [0-9:]{8} :  Warning logged for process '" +
                             Platform::ProcessName() + "':"));
    utsname names = {};
    uname(&names);
    char version[16];
    snprintf(version, sizeof version, "%X", static_cast<unsigned>(Platform::SystemVersion()));
    EXPECT_EQ(log.substr(lineEnd), "\n\nOS Version: " + std::string(version) + " (" + names.sysname +
                                       ")\n Node Name: " + names.nodename + "\n   Machine: " + names.machine +
                                       "\n    Bundle: Velmora (com.velmora.Velmora)\n B.Version: " +
                                       CBundle::Instance()->GetVersionNumber() + "\n\n" + kSeparator + "\n" + message +
                                       kSeparator + "\n\n\n\n\n");

    testing::internal::CaptureStderr();
    const std::string longText = std::string(100000, 'x') + "%s%n";
    EXPECT_TRUE(CErr::MinorError(SHRT_MIN, "f", longText.c_str()));
    EXPECT_TRUE(CErr::MinorError(1, "f", "Gleispl\x8An"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("-32768\n Description :  " + longText + "\n"));
    EXPECT_THAT(reports.mAlerts.back().text, HasSubstr("Gleispl\xC3\xA4n")) << "Mac OS Roman where it is no UTF-8";
    EXPECT_TRUE(Log().starts_with(log)) << "entries are appended";
}

TEST_F(CErrReports, FatalReportsEndTheProcessWithStatusZero)
{
    Platform::SetAlertHandler(&PrintAlert, nullptr);
    ExpectFatal({{"^$", [] { CErr::CheckError(-43, ""); }}, {"^$", [] { CErr::CheckError(-43, "f", nullptr); }}});
    EXPECT_EQ(Log(), "");
    ExpectFatal({{"^ Function    :  CheckError\n Error Code  :  -43\n Description :  no file\n\nALERT 0",
                  [] { CErr::CheckError(-43, "no file"); }},
                 {"^ Function    :  f\n Error Code  :  <NULL>\n Description :  d\n\nALERT 0",
                  [] { CErr::CheckNull(nullptr, "f", "d"); }},
                 {"\\?\\?\\?\n.*ALERT 0", [] { CErr::CheckNull(nullptr, ""); }}});
    EXPECT_THAT(Log(), HasSubstr(" :  Error logged for process '"));
    Platform::SetAlertHandler(nullptr, nullptr);
}

TEST_F(CErrReports, WithoutLogsFolderTheEntryIsDroppedAndTheAlertShown)
{
    char path[512] = "x";
    ASSERT_TRUE(CErr::GetPathToErrorLog(path, sizeof path));
    EXPECT_EQ(path, mFolder + "/Velmora.error.log");
    EXPECT_FALSE(CErr::GetPathToErrorLog(path, static_cast<int>(mFolder.size()) + 2));
    EXPECT_STREQ(path, "");
    std::filesystem::remove_all(mFolder);
    CReports reports;
    testing::internal::CaptureStderr();
    EXPECT_TRUE(CErr::MinorError(5, "x"));
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(reports.mAlerts.size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(mFolder)) << "a report must not make folders";
}
