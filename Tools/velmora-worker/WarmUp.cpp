#include "WarmUp.h"

#include "Importer/Names.h"
#include "Platform/Fonts.h"
#include "Platform/Process.h"
#include "Requests.h"

void CWarmUp::Run(Jail::eProfile profile)
{
    Platform::LookUpSettings();
    Platform::ListFonts(); // a load asks for the fonts of texts
    // No attribute and no report depends on the size of a text. Only drawing does, and needs a text library for it that
    // takes milliseconds to start.
    Platform::SetTextMeasuring(profile == Jail::eProfile::kDraw);
    if (profile == Jail::eProfile::kDraw) {
        PrepareDrawing();
    }
    mDocument = BuiltInDocument::Open();
    Rehearse();
}

void CWarmUp::Rehearse() const
{
    // The answer does not matter: a plug-in for other documents says no.
    if (mDocument.IsOpen()) {
        AnswerImport(mPlugIn, Importer::kContentType, mDocument.Get());
    }
}
