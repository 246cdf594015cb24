# Configure-time part of the descriptions of libqvgentl: fills in versions, the shared
# TestControl part and the per-transport details of the camera, and gives every configured
# file a VersionGuid derived from its content (GenApi caches descriptions by that GUID).

set(QVGENTL_DESCRIPTION_SOURCE_DIR ${CMAKE_CURRENT_SOURCE_DIR}/descriptions)
set(QVGENTL_DESCRIPTION_DIR ${CMAKE_CURRENT_BINARY_DIR}/descriptions)
set(QV_FILE_VERSION_MAJOR ${PROJECT_VERSION_MAJOR})
set(QV_FILE_VERSION_MINOR ${PROJECT_VERSION_MINOR})
set(QV_FILE_VERSION_SUBMINOR ${PROJECT_VERSION_PATCH})

# qvgentl_configure_description(<source> <output> <port>): the CAM_* variables of the caller
# are visible to the template.
function(qvgentl_configure_description source output port)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
        ${QVGENTL_DESCRIPTION_SOURCE_DIR}/${source} ${QVGENTL_DESCRIPTION_SOURCE_DIR}/TestControl.xml.in)
    file(READ ${QVGENTL_DESCRIPTION_SOURCE_DIR}/TestControl.xml.in test_control)
    set(QV_PORT ${port})
    string(CONFIGURE "${test_control}" QV_TEST_CONTROL @ONLY)
    file(READ ${QVGENTL_DESCRIPTION_SOURCE_DIR}/${source} template)
    set(QV_VERSION_GUID "@QV_VERSION_GUID@") # kept for the second pass
    string(CONFIGURE "${template}" content @ONLY)
    string(SHA1 hash "${content}")
    string(SUBSTRING ${hash} 0 8 a)
    string(SUBSTRING ${hash} 8 4 b)
    string(SUBSTRING ${hash} 12 4 c)
    string(SUBSTRING ${hash} 16 4 d)
    string(SUBSTRING ${hash} 20 12 e)
    string(REPLACE "@QV_VERSION_GUID@" "${a}-${b}-${c}-${d}-${e}" content "${content}")
    file(CONFIGURE OUTPUT ${QVGENTL_DESCRIPTION_DIR}/${output} CONTENT "${content}" @ONLY)
endfunction()

qvgentl_configure_description(System.xml System.xml TLPort)
qvgentl_configure_description(Interface.xml Interface.xml InterfacePort)
qvgentl_configure_description(LocalDevice.xml LocalDevice.xml DevicePort)
qvgentl_configure_description(DataStream.xml DataStream.xml DataStreamPort)
qvgentl_configure_description(Buffer.xml Buffer.xml BufferPort)

# Pixel formats of the camera: the same list, in the same order, as kPixelFormats in
# virtual/PixelFormats.cpp.
set(qvgentl_pixel_formats
    Mono8 0x01080001 Mono10 0x01100003 Mono12 0x01100005 Mono16 0x01100007
    Mono10p 0x010A0046 Mono12p 0x010C0047
    BayerGR8 0x01080008 BayerRG8 0x01080009 BayerGB8 0x0108000A BayerBG8 0x0108000B
    BayerGR12 0x01100010 BayerRG12 0x01100011 BayerGB12 0x01100012 BayerBG12 0x01100013
    RGB8 0x02180014 BGR8 0x02180015 BGRa8 0x02200017 YCbCr422_8 0x0210003B)
set(CAM_PIXEL_FORMAT_ENTRIES "")
set(CAM_CHUNK_PIXEL_FORMAT_ENTRIES "")
list(LENGTH qvgentl_pixel_formats count)
math(EXPR last "${count} - 1")
foreach(i RANGE 0 ${last} 2)
    math(EXPR j "${i} + 1")
    list(GET qvgentl_pixel_formats ${i} name)
    list(GET qvgentl_pixel_formats ${j} code)
    set(available "")
    if(name STREQUAL "Mono10p")
        set(available "      <pIsAvailable>Mono10pAvailable</pIsAvailable>\n")
    endif()
    string(APPEND CAM_PIXEL_FORMAT_ENTRIES
        "    <EnumEntry Name=\"${name}\" NameSpace=\"Standard\">\n${available}      <Value>${code}</Value>\n    </EnumEntry>\n")
    string(APPEND CAM_CHUNK_PIXEL_FORMAT_ENTRIES
        "    <EnumEntry Name=\"${name}\" NameSpace=\"Standard\">\n      <Value>${code}</Value>\n    </EnumEntry>\n")
endforeach()
string(REGEX REPLACE "\n$" "" CAM_PIXEL_FORMAT_ENTRIES "${CAM_PIXEL_FORMAT_ENTRIES}")
string(REGEX REPLACE "\n$" "" CAM_CHUNK_PIXEL_FORMAT_ENTRIES "${CAM_CHUNK_PIXEL_FORMAT_ENTRIES}")

# One camera description per transport: byte order and event layout follow the transport.
foreach(tl U3V GEV CXP)
    set(CAM_TL ${tl})
    if(tl STREQUAL "U3V")
        set(CAM_ENDIANESS LittleEndian)
        set(CAM_STANDARD_NAMESPACE USB)
        set(CAM_EVENT_TIMESTAMP_ADDRESS 4)
        set(CAM_EVENT_DATA_ADDRESS 12)
        set(CAM_PRODUCT_GUID 5c1d2a60-3b7e-4f1a-9d2c-0a6e51b7c011)
    elseif(tl STREQUAL "GEV")
        set(CAM_ENDIANESS BigEndian)
        set(CAM_STANDARD_NAMESPACE GEV)
        set(CAM_EVENT_TIMESTAMP_ADDRESS 8)
        set(CAM_EVENT_DATA_ADDRESS 16)
        set(CAM_PRODUCT_GUID 5c1d2a60-3b7e-4f1a-9d2c-0a6e51b7c012)
    else()
        set(CAM_ENDIANESS BigEndian)
        set(CAM_STANDARD_NAMESPACE None)
        set(CAM_EVENT_TIMESTAMP_ADDRESS 8)
        set(CAM_EVENT_DATA_ADDRESS 16)
        set(CAM_PRODUCT_GUID 5c1d2a60-3b7e-4f1a-9d2c-0a6e51b7c013)
    endif()
    qvgentl_configure_description(VirtualCamera.xml.in VirtualCamera_${tl}.xml Device)
endforeach()

set(QVGENTL_PLAIN_DESCRIPTIONS System.xml Interface.xml LocalDevice.xml DataStream.xml Buffer.xml)
set(QVGENTL_ZIPPED_DESCRIPTIONS VirtualCamera_U3V.xml VirtualCamera_GEV.xml VirtualCamera_CXP.xml)
