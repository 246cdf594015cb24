# QvApi_TL: the SDK's public modules.
target_sources(QvApi_TL PRIVATE
    ${CMAKE_SOURCE_DIR}/QvApi_TL/BPS.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/FPS.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvString.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvApi.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvPixelComponent.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvPixelComponentInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvPixelFormatInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvSpecificPixelComponentInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvSpecificPixelInfo.cpp
)
# Module tree: systems, interfaces, devices, ports, event listeners, pointer arrays.
target_sources(QvApi_TL PRIVATE
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvAutoPtrArray.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvDataStreamFactory.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvDevice.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvDeviceInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvDevicePtrArray.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvEvent.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvEventDataInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvEventFeatureChange.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvEventFeatureInvalidate.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvEventModule.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvEventNewBuffer.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvEventRemoteDevice.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvIFDeviceInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvInterface.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvInterfaceInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvPort.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvPortInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvPortURLInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvSystem.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvSystemInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvSystemPtrArray.cpp
)
# The feature bag.
target_sources(QvApi_TL PRIVATE ${CMAKE_SOURCE_DIR}/QvApi_TL/QvFeatureBag.cpp)
# Acquisition: data streams, stream buffers and their pointer array.
target_sources(QvApi_TL PRIVATE
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvDataStream.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvDataStreamInfo.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvDataStreamPtrArray.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvStreamBuffer.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvStreamBufferImage.cpp
    ${CMAKE_SOURCE_DIR}/QvApi_TL/QvStreamBufferInfo.cpp
)
