// SPDX-License-Identifier: MIT
#include "DataDirectorySetting.h"

#include "GamePaths.h"

namespace DataDirectorySetting {

namespace {

QString fromLatin1(std::string_view text)
{
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

QString settingKey()
{
    return fromLatin1(GamePaths::kSettingSection) + QLatin1Char('/') + fromLatin1(GamePaths::kSettingKey);
}

} // namespace

std::unique_ptr<QSettings> userSettings()
{
    const QString application = fromLatin1(GamePaths::kSettingApplication);
    return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope, application, application);
}

QString load(QSettings &settings)
{
    return settings.value(settingKey(), fromLatin1(GamePaths::kDefaultDataDir)).toString();
}

void store(QSettings &settings, const QString &dataDir)
{
    settings.setValue(settingKey(), dataDir);
    settings.sync();
}

bool isStored(QSettings &settings)
{
    return settings.contains(settingKey());
}

} // namespace DataDirectorySetting
