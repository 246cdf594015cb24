#pragma once

#include <Base/GCStringVector.h>
#include <GenApi/Types.h>

namespace GenApi
{
/**
 * \brief What the loader tolerated in a description; cast a node map to it (CLoadWarningsPtr).
 *
 * Some descriptions in the field break the schema in ways whose meaning is still plain. The
 * engine loads them and records one text per tolerated defect, in document order, each naming the
 * node and the line, e.g. "Node 'ImageFormatControl' : pFeature 'SensorWidth' names no node; left
 * out of the category (line 81)". Tolerated:
 *  - a pFeature naming no node: the category lists its other features;
 *  - a pIsImplemented, pIsAvailable, pIsLocked or pBlockPolling naming no node: the condition is
 *    ignored, as if the element were absent;
 *  - a pAlias or pCastAlias naming no node: the node has no alias;
 *  - a register without pPort: it reaches no register space and is not implemented (NI), like a
 *    register behind a Port nobody connected;
 *  - an AccessMode or ImposedAccessMode of "R" or "W": read as RO or WO.
 * Everything else stays a load error: dangling references where a value, an address, a length, a
 * range, a port or an invalidation is read (pValue, pAddress, pPort, pVariable, pIndex, pMin,
 * pInvalidator, pSelected, pError, ...), other invalid texts, duplicate names. Elements are
 * accepted in any order (the schema's order carries no meaning) and that is not recorded. At most
 * 1000 warnings are kept; a last line "... and N more warnings" counts the others.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT ILoadWarnings
{
    /**
     * \brief Replaces \a warnings with the texts recorded while loading (empty for a clean
     *        description). Any thread: the list does not change after loading.
     */
    virtual void GetLoadWarnings(GenICam::gcstring_vector& warnings) const = 0;

protected:
    virtual ~ILoadWarnings() = default;
};
} // namespace GenApi
