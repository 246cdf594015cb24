#pragma once

#include <Base/GCString.h>
#include <GenApi/IBase.h>

namespace GenApi
{
/**
 * \brief An object standing in for a node it is bound to later (CEnumerationTRef and the feature
 *        members of generated parameter classes).
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IReference
{
    /// Binds the object to the node behind \a pBase (null unbinds it).
    virtual void SetReference(IBase* pBase) = 0;

protected:
    virtual ~IReference() = default;
};

/**
 * \brief Maps the values of an application's C++ enumeration to the entries of an Enumeration
 *        node: value \a index stands for the entry whose symbolic is \a name.
 */
GENICAM_INTERFACE GENAPI_DECL_ABSTRACT IEnumReference
{
    /// Binds C++ value \a index to the entry named \a name (absent entries stay unbound).
    virtual void SetEnumReference(int index, GenICam::gcstring name) = 0;
    /// Number of C++ values (0 .. number - 1); call before SetEnumReference.
    virtual void SetNumEnums(int number) = 0;

protected:
    virtual ~IEnumReference() = default;
};
} // namespace GenApi
