// SPDX-License-Identifier: MIT
#include "ScriptWriter.h"

#include "AtomicFile.h"
#include "NumberText.h"

using NumberText::intText;
using NumberText::realText;

namespace {

class ScriptText
{
public:
    std::string text;

    ScriptText &operator<<(std::string_view piece)
    {
        text += piece;
        return *this;
    }
    void endLine() { text += "\r\n"; }
    void quoted(std::string_view value)
    {
        text += '"';
        text += value;
        text += '"';
    }
};

// Records are looked up by entry index; a table shorter than its list (only a caller that did not
// fill the tables makes one) gets blank rows, so the statement still closes.
template<typename Record>
const Record &recordAt(const std::vector<Record> &records, std::size_t i)
{
    static const Record blank{};
    return i < records.size() ? records[i] : blank;
}

} // namespace

std::string WeaponScriptText(const EditorDocument &document)
{
    ScriptText out;
    out.text.reserve(1024);

    out << document.Weapon.SWCString();
    out.endLine();
    out.endLine();

    if (!document.hasNoResults()) {
        for (const WeaponResult &result : document.WeaponResults) {
            out << "AddWeaponResult(NewWeaponType,";
            out.quoted(result.sCondition);
            out << ",";
            out.quoted(result.sEffect);
            out << ",";
            out.quoted(result.sTarget);
            out << "," << realText(result.fMinEffect) << "," << realText(result.fMaxEffect) << ",";
            out.quoted(result.sSpawnedWeaponEffect);
            out << ")";
            out.endLine();
        }
        out.endLine();
    }

    out << "setAngles(NewWeaponType," << realText(document.fFiringArc) << "," << realText(document.fLeftRotation)
        << "," << realText(document.fRightRotation) << "," << realText(document.fDownRotation) << ","
        << realText(document.fUpRotation) << ")";
    out.endLine();
    out.endLine();

    if (document.bHasMiscValues) {
        out << "setMiscValues(NewWeaponType," << realText(document.fBarrelRecoil) << ","
            << realText(document.fSlaveFireDelay) << ")";
        out.endLine();
        out.endLine();
    }

    out << "setPenetration(NewWeaponType," << intText(document.iFieldPenetration) << ","
        << realText(document.fDefaultPenetration) << ",";
    out.endLine();
    const std::size_t armourCount = document.lstArmorFamilies.size();
    for (std::size_t i = 0; i < armourCount; ++i) {
        const FamilyPenetration &record = recordAt(document.FamilyPenetrations, i);
        out << "{" << record.sFamily << "=" << realText(record.fPenetration) << (i + 1 < armourCount ? ",}," : ",})");
        out.endLine();
    }
    // Without families the statement still needs its ")", or the reader's table scan would take
    // every following line.
    if (armourCount == 0) {
        out << ")";
        out.endLine();
    }
    out.endLine();

    out << "setAccuracy(NewWeaponType," << intText(document.iDefaultAccuracy) << ",";
    out.endLine();
    const std::size_t attackCount = document.lstAccuracy.size();
    bool lastHasDamage = false;
    for (std::size_t i = 0; i < attackCount; ++i) {
        const FamilyAccuracy &record = recordAt(document.FamilyAccuracies, i);
        lastHasDamage = record.iAlwaysDamage != 0;
        out << "{" << record.sFamily << "=" << realText(record.fAccuracy) << (lastHasDamage ? ", damage=1," : ",")
            << (i + 1 < attackCount ? "}," : "})");
        out.endLine();
    }
    if (attackCount == 0) {
        out << ")";
        out.endLine();
    }
    if (!lastHasDamage)
        out.endLine();

    for (const std::string &line : document.strScriptLines) {
        if (!line.empty()) {
            out << line;
            out.endLine();
        }
    }
    return std::move(out.text);
}

void WriteWeaponScript(const EditorDocument &document, std::ostream &out)
{
    const std::string text = WeaponScriptText(document);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

std::optional<std::string> WriteWeaponScript(const EditorDocument &document, const std::string &path)
{
    return AtomicFile::write(path, WeaponScriptText(document));
}
