#pragma once

#include "ui/BackupListModel.h"
#include "ui/ConnectionEditor.h"
#include "ui/KeyListModel.h"
#include "ui/LibraryHitList.h"
#include "ui/PreferenceEditor.h"
#include "ui/ProviderModelList.h"
#include "ui/ServerModelList.h"

namespace varnel {

/// Everything that the settings, the first run and the management of models look at.
struct SettingsObjects
{
    /// The model outlives the objects.
    explicit SettingsObjects(AppModel& app)
        : connection(app)
        , preferences(app)
        , keys(app)
        , providerModels(app)
        , backups(app)
        , serverModels(app)
        , libraryHits(app)
    {}

    /// Hands the objects to the screens; they outlive the engine.
    void provideTo(QQmlEngine& engine)
    {
        provide(engine, connection);
        provide(engine, preferences);
        provide(engine, keys);
        provide(engine, providerModels);
        provide(engine, backups);
        provide(engine, serverModels);
        provide(engine, libraryHits);
    }

    ConnectionEditor connection;
    PreferenceEditor preferences;
    KeyListModel keys;
    ProviderModelList providerModels;
    BackupListModel backups;
    ServerModelList serverModels;
    LibraryHitList libraryHits;
};

} // namespace varnel
