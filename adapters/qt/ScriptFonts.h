#pragma once

// The fonts that scripts are drawn with. They are named, so that the same fonts are used whichever others are
// installed.

#include <QFont>
#include <QList>
#include <QString>
#include <QStringList>
#include <QTextLayout>

namespace TalvoConsentSDK {

/// Returns the families that draw most texts: Inter, then fonts that match Inter for what it lacks, then the
/// system's. Leaves out families that are not installed.
const QStringList& generalFamilies();

/// Returns the parts of a text whose scripts have fonts of their own, with these fonts. Without them, Qt
/// prints a warning for each general family that cannot shape such a script.
QList<QTextLayout::FormatRange> scriptFormats(const QString& text);

/// Returns `font` with the families for the first script of `word` that has a font of its own, if there is
/// one.
QFont fontFor(const QString& word, const QFont& font);

}  // namespace TalvoConsentSDK
