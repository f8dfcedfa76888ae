// OwnedEntities: the entities of a drawing that has no drawing window.
// Filling the list is left to DXFL_Processing.
#pragma once

#include "DraftEntity.h"

#include <list>

/// An entity list that deletes its entities when it is destroyed.
struct OwnedEntities {
    OwnedEntities() = default;
    ~OwnedEntities()
    {
        for (const DraftEntity* entity : list)
            delete entity;
    }
    OwnedEntities(const OwnedEntities&) = delete;
    OwnedEntities& operator=(const OwnedEntities&) = delete;

    std::list<DraftEntity*> list;
};
