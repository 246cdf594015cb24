#pragma once

#include <cstring>

#include <GenApi/Types.h>

namespace GenApi
{
namespace Detail
{
template <typename E>
struct EnumName_t
{
    E value;
    const char* name;
};

template <typename E, size_t N>
bool EnumFromString(const EnumName_t<E> (&table)[N], const GenICam::gcstring& text, E* pValue)
{
    if (!pValue)
        return false;
    for (const EnumName_t<E>& item : table)
        if (std::strcmp(item.name, text.c_str()) == 0)
        {
            *pValue = item.value;
            return true;
        }
    return false;
}

template <typename E, size_t N>
GenICam::gcstring EnumToString(const EnumName_t<E> (&table)[N], E value)
{
    for (const EnumName_t<E>& item : table)
        if (item.value == value)
            return item.name;
    return "_Undefined";
}
} // namespace Detail

// Each E...Class converts its enumeration to and from the text used in descriptions.
// FromString returns false (and leaves *pValue alone) for unknown text.
#define QV_GENAPI_ENUM_CLASS(ClassName, EnumType, ...)                                                 \
    class ClassName                                                                                    \
    {                                                                                                  \
    public:                                                                                            \
        static bool FromString(const GenICam::gcstring& valueText, EnumType* pValue)                   \
        {                                                                                              \
            static const Detail::EnumName_t<EnumType> table[] = {__VA_ARGS__};                         \
            return Detail::EnumFromString(table, valueText, pValue);                                   \
        }                                                                                              \
        static GenICam::gcstring ToString(EnumType value)                                              \
        {                                                                                              \
            static const Detail::EnumName_t<EnumType> table[] = {__VA_ARGS__};                         \
            return Detail::EnumToString(table, value);                                                 \
        }                                                                                              \
        static void ToString(GenICam::gcstring& valueText, EnumType* pValue)                           \
        {                                                                                              \
            if (pValue)                                                                                \
                valueText = ToString(*pValue);                                                         \
        }                                                                                              \
    };

QV_GENAPI_ENUM_CLASS(ESignClass, ESign, {Signed, "Signed"}, {Unsigned, "Unsigned"})
QV_GENAPI_ENUM_CLASS(EEndianessClass, EEndianess, {BigEndian, "BigEndian"}, {LittleEndian, "LittleEndian"})
QV_GENAPI_ENUM_CLASS(EAccessModeClass, EAccessMode, {RW, "RW"}, {RO, "RO"}, {WO, "WO"}, {NA, "NA"},
                     {NI, "NI"}, {_UndefinedAccesMode, "_UndefinedAccesMode"},
                     {_CycleDetectAccesMode, "_CycleDetectAccesMode"})
QV_GENAPI_ENUM_CLASS(EVisibilityClass, EVisibility, {Beginner, "Beginner"}, {Expert, "Expert"},
                     {Guru, "Guru"}, {Invisible, "Invisible"}, {_UndefinedVisibility, "_UndefinedVisibility"})
QV_GENAPI_ENUM_CLASS(ECachingModeClass, ECachingMode, {NoCache, "NoCache"}, {WriteThrough, "WriteThrough"},
                     {WriteAround, "WriteAround"}, {_UndefinedCachingMode, "_UndefinedCachingMode"})
QV_GENAPI_ENUM_CLASS(ERepresentationClass, ERepresentation, {Linear, "Linear"}, {Logarithmic, "Logarithmic"},
                     {Boolean, "Boolean"}, {PureNumber, "PureNumber"}, {HexNumber, "HexNumber"},
                     {IPV4Address, "IPV4Address"}, {MACAddress, "MACAddress"},
                     {_UndefinedRepresentation, "_UndefinedRepresentation"})
QV_GENAPI_ENUM_CLASS(ENameSpaceClass, ENameSpace, {Custom, "Custom"}, {Standard, "Standard"},
                     {_UndefinedNameSpace, "_UndefinedNameSpace"})
QV_GENAPI_ENUM_CLASS(EStandardNameSpaceClass, EStandardNameSpace, {None, "None"}, {GEV, "GEV"}, {IIDC, "IIDC"},
                     {CL, "CL"}, {USB, "USB"}, {_UndefinedStandardNameSpace, "_UndefinedStandardNameSpace"})
QV_GENAPI_ENUM_CLASS(EYesNoClass, EYesNo, {Yes, "Yes"}, {No, "No"}, {_UndefinedYesNo, "_UndefinedYesNo"})
QV_GENAPI_ENUM_CLASS(ESlopeClass, ESlope, {Increasing, "Increasing"}, {Decreasing, "Decreasing"},
                     {Varying, "Varying"}, {Automatic, "Automatic"}, {_UndefinedESlope, "_UndefinedESlope"})
QV_GENAPI_ENUM_CLASS(EDisplayNotationClass, EDisplayNotation, {fnAutomatic, "Automatic"}, {fnFixed, "Fixed"},
                     {fnScientific, "Scientific"}, {_UndefinedEDisplayNotation, "_UndefinedEDisplayNotation"})
QV_GENAPI_ENUM_CLASS(EInputDirectionClass, EInputDirection, {idFrom, "From"}, {idTo, "To"}, {idNone, "None"})
QV_GENAPI_ENUM_CLASS(EGenApiSchemaVersionClass, EGenApiSchemaVersion, {v1_0, "v1_0"}, {v1_1, "v1_1"},
                     {_Undefined, "_Undefined"})
QV_GENAPI_ENUM_CLASS(EInterfaceTypeClass, EInterfaceType, {intfIValue, "intfIValue"}, {intfIBase, "intfIBase"},
                     {intfIInteger, "intfIInteger"}, {intfIBoolean, "intfIBoolean"},
                     {intfICommand, "intfICommand"}, {intfIFloat, "intfIFloat"}, {intfIString, "intfIString"},
                     {intfIRegister, "intfIRegister"}, {intfICategory, "intfICategory"},
                     {intfIEnumeration, "intfIEnumeration"}, {intfIEnumEntry, "intfIEnumEntry"},
                     {intfIPort, "intfIPort"})
QV_GENAPI_ENUM_CLASS(EIncModeClass, EIncMode, {noIncrement, "noIncrement"}, {fixedIncrement, "fixedIncrement"},
                     {listIncrement, "listIncrement"})

#undef QV_GENAPI_ENUM_CLASS
} // namespace GenApi
