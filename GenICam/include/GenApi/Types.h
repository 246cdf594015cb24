#pragma once

#include <Base/GCBase.h>
#include <GenApi/Autovector.h>
#include <GenApi/GenApiNamespace.h>

namespace GenApi
{
/// Access mode of a node, weakest first.
typedef enum _EAccessMode
{
    NI = 0, ///< Not implemented
    NA = 1, ///< Not available
    WO = 2, ///< Write only
    RO = 3, ///< Read only
    RW = 4, ///< Read and write
    _UndefinedAccesMode = 5,
    _CycleDetectAccesMode = 6
} EAccessMode;

/// Who a feature is meant for.
typedef enum _EVisibility
{
    Beginner = 0,
    Expert = 1,
    Guru = 2,
    Invisible = 3,
    _UndefinedVisibility = 99
} EVisibility;

/// How a node caches its value.
typedef enum _ECachingMode
{
    NoCache = 0,
    WriteThrough = 1,
    WriteAround = 2,
    _UndefinedCachingMode = 3
} ECachingMode;

/// How a numeric value is best shown.
typedef enum _ERepresentation
{
    Linear = 0,
    Logarithmic = 1,
    Boolean = 2,
    PureNumber = 3,
    HexNumber = 4,
    IPV4Address = 5,
    MACAddress = 6,
    _UndefinedRepresentation = 7
} ERepresentation;

/// Byte order of a register.
typedef enum _EEndianess
{
    BigEndian = 0,
    LittleEndian = 1,
    _UndefinedEndian = 2
} EEndianess;

/// Sign of an integer register.
typedef enum _ESign
{
    Signed = 0,
    Unsigned = 1,
    _UndefinedSign = 2
} ESign;

/// Name space of a node name.
typedef enum _ENameSpace
{
    Custom = 0,
    Standard = 1,
    _UndefinedNameSpace = 2
} ENameSpace;

/// Standard a description follows.
typedef enum _EStandardNameSpace
{
    None = 0,
    GEV = 1,
    IIDC = 2,
    CL = 3,
    USB = 4,
    _UndefinedStandardNameSpace = 5
} EStandardNameSpace;

/// Yes or no, as descriptions spell it.
typedef enum _EYesNo
{
    No = 0,
    Yes = 1,
    _UndefinedYesNo = 2
} EYesNo;

/// Direction of a converter's formula.
typedef enum _ESlope
{
    Increasing = 0,
    Decreasing = 1,
    Varying = 2,
    Automatic = 3,
    _UndefinedESlope = 4
} ESlope;

/// Float notation used by ToString.
typedef enum _EDisplayNotation
{
    fnAutomatic = 0,
    fnFixed = 1,
    fnScientific = 2,
    _UndefinedEDisplayNotation = 3
} EDisplayNotation;

/// Principal interface of a node.
typedef enum _EInterfaceType
{
    intfIValue = 0,
    intfIBase = 1,
    intfIInteger = 2,
    intfIBoolean = 3,
    intfICommand = 4,
    intfIFloat = 5,
    intfIString = 6,
    intfIRegister = 7,
    intfICategory = 8,
    intfIEnumeration = 9,
    intfIEnumEntry = 10,
    intfIPort = 11
} EInterfaceType;

/// How the valid values of a number are spaced.
typedef enum _EIncMode
{
    noIncrement = 0,
    fixedIncrement = 1,
    listIncrement = 2
} EIncMode;

/// Which formula of a converter a variable belongs to.
typedef enum _EInputDirection
{
    idFrom = 0,
    idTo = 1,
    idNone = 2
} EInputDirection;

/// Kind of link asked of INode::GetChildren.
typedef enum _ELinkType
{
    ctParentNodes = 0,
    ctReadingChildren = 1,
    ctWritingChildren = 2,
    ctInvalidatingChildren = 3,
    ctDependingNodes = 4,
    ctTerminalNodes = 5,
    ctValueChangingChildren = 6
} ELinkType;

/// Checks run while loading.
typedef enum _EXMLValidation
{
    xvLoad = 0x00000001L,
    xvCycles = 0x00000002L,
    xvSFNC = 0x00000004L,
    xvDefault = 0x00000000L,
    xvAll = 0xffffffffL,
    _UndefinedEXMLValidation = 0x8000000L
} EXMLValidation;

/// Schema version of a description.
typedef enum _EGenApiSchemaVersion
{
    v1_0 = 1,
    v1_1 = 2,
    _Undefined = -1
} EGenApiSchemaVersion;

/// Whether callbacks are held back (accepted for compatibility).
typedef enum _ECallbackSuppressMode
{
    csmOff = 0,
    csmActive = 1,
    csmOnce = 2
} ECallbackSuppressMode;

/// A list of symbolic names.
typedef GenICam::gcstring_vector StringList_t;

/// Version of a description, schema or library.
struct Version_t
{
    uint16_t Major;
    uint16_t Minor;
    uint16_t SubMinor;
};
} // namespace GenApi
