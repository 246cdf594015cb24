# QvSDKCommon: runtime foundation shared by the SDK (exceptions, events, worker, callbacks).
target_sources(QvApi_TL PRIVATE
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/CLockBySemaphore.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/EventObject.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvCallbackManager.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvExceptionMacros.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvGenTLErrorException.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvGenTLErrorExceptionReporter.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvLinuxErrorException.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvLinuxErrorExceptionReporter.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvUtilities.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/Worker.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/LineCopy.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvImageBuffer.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvROIImage.cpp
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvTestChart.cpp
)
# Description loading: a port's URL to a GenApi node map.
target_sources(QvApi_TL PRIVATE
    ${CMAKE_SOURCE_DIR}/QvSDKCommon/QvXMLFile.cpp
)
