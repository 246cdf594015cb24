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
# The feature bag.
target_sources(QvApi_TL PRIVATE ${CMAKE_SOURCE_DIR}/QvApi_TL/QvFeatureBag.cpp)
