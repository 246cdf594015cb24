#include "FaultProducer.h"

// The default GenApi descriptions of the ports. Modules get a scratch register; the camera a
// small feature set backed by the registers in FaultProducer.h. Tests replace them with
// SetPortDescription() when they need other content.
namespace QvFault
{
namespace
{
std::string Header(const char* modelName, const char* productGuid)
{
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<RegisterDescription ModelName=\"") +
           modelName +
           "\" VendorName=\"QvApi\" ToolTip=\"Fault-injection producer\" StandardNameSpace=\"None\""
           " SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\""
           " MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\" ProductGuid=\"" +
           productGuid +
           "\" VersionGuid=\"8B4D2F61-0C7A-4E3B-B5D9-1E6A7C2F3D44\""
           " xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n";
}

std::string IntReg(const char* name, const char* nameSpace, unsigned address, const char* access, const char* port,
                   const char* cachable)
{
    std::string text = std::string("  <IntReg Name=\"") + name + "\"";
    if (nameSpace != nullptr)
        text += std::string(" NameSpace=\"") + nameSpace + "\"";
    char addressText[32];
    snprintf(addressText, sizeof(addressText), "0x%X", address);
    text += std::string(">\n    <Address>") + addressText + "</Address>\n    <Length>4</Length>\n    <AccessMode>" +
            access + "</AccessMode>\n    <pPort>" + port + "</pPort>\n";
    if (cachable != nullptr)
        text += std::string("    <Cachable>") + cachable + "</Cachable>\n";
    text += "    <Sign>Unsigned</Sign>\n    <Endianess>LittleEndian</Endianess>\n  </IntReg>\n";
    return text;
}

std::string ModuleDescription(const char* modelName, const char* productGuid)
{
    return Header(modelName, productGuid) +
           "  <Category Name=\"Root\" NameSpace=\"Standard\">\n"
           "    <pFeature>QvFaultModuleValue</pFeature>\n"
           "  </Category>\n" +
           IntReg("QvFaultModuleValue", nullptr, 0, "RW", "TLPort", nullptr) +
           "  <Port Name=\"TLPort\"/>\n"
           "</RegisterDescription>\n";
}

std::string CameraDescription()
{
    return Header("QvFaultCamera", "2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A16") +
           "  <Category Name=\"Root\" NameSpace=\"Standard\">\n"
           "    <pFeature>Width</pFeature>\n"
           "    <pFeature>Height</pFeature>\n"
           "    <pFeature>PixelFormat</pFeature>\n"
           "    <pFeature>PayloadSize</pFeature>\n"
           "    <pFeature>TLParamsLocked</pFeature>\n"
           "    <pFeature>AcquisitionStart</pFeature>\n"
           "    <pFeature>AcquisitionStop</pFeature>\n"
           "  </Category>\n" +
           IntReg("Width", "Standard", kRegWidth, "RW", "Device", nullptr) +
           IntReg("Height", "Standard", kRegHeight, "RW", "Device", nullptr) +
           "  <Enumeration Name=\"PixelFormat\" NameSpace=\"Standard\">\n"
           "    <EnumEntry Name=\"Mono8\" NameSpace=\"Standard\">\n"
           "      <Value>0x01080001</Value>\n"
           "    </EnumEntry>\n"
           "    <EnumEntry Name=\"Mono16\" NameSpace=\"Standard\">\n"
           "      <Value>0x01100007</Value>\n"
           "    </EnumEntry>\n"
           "    <pValue>PixelFormatReg</pValue>\n"
           "  </Enumeration>\n" +
           IntReg("PixelFormatReg", nullptr, kRegPixelFormat, "RW", "Device", nullptr) +
           IntReg("PayloadSize", "Standard", kRegPayloadSize, "RO", "Device", "NoCache") +
           IntReg("TLParamsLocked", "Standard", kRegTLParamsLocked, "RW", "Device", nullptr) +
           "  <Command Name=\"AcquisitionStart\" NameSpace=\"Standard\">\n"
           "    <pValue>AcquisitionStartReg</pValue>\n"
           "    <CommandValue>1</CommandValue>\n"
           "  </Command>\n" +
           IntReg("AcquisitionStartReg", nullptr, kRegAcquisitionStart, "WO", "Device", nullptr) +
           "  <Command Name=\"AcquisitionStop\" NameSpace=\"Standard\">\n"
           "    <pValue>AcquisitionStopReg</pValue>\n"
           "    <CommandValue>1</CommandValue>\n"
           "  </Command>\n" +
           IntReg("AcquisitionStopReg", nullptr, kRegAcquisitionStop, "WO", "Device", nullptr) +
           "  <Port Name=\"Device\" NameSpace=\"Standard\"/>\n"
           "</RegisterDescription>\n";
}
} // namespace

std::string DefaultDescription(QvFaultModule kind)
{
    switch (kind)
    {
    case QV_FAULT_MODULE_SYSTEM: return ModuleDescription("QvFaultSystem", "2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A11");
    case QV_FAULT_MODULE_INTERFACE:
        return ModuleDescription("QvFaultInterface", "2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A12");
    case QV_FAULT_MODULE_DEVICE: return ModuleDescription("QvFaultDevice", "2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A13");
    case QV_FAULT_MODULE_REMOTE_DEVICE: return CameraDescription();
    case QV_FAULT_MODULE_STREAM: return ModuleDescription("QvFaultStream", "2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A14");
    case QV_FAULT_MODULE_BUFFER: return ModuleDescription("QvFaultBuffer", "2C0E1B7A-6F3D-4E52-9A1B-5D7C3E9F0A15");
    default: return std::string();
    }
}
} // namespace QvFault
