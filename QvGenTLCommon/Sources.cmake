# QvGenTLCommon: the GenTL producer loader.
target_sources(QvApi_TL PRIVATE
    ${CMAKE_SOURCE_DIR}/QvGenTLCommon/QvGenTLLib.cpp
)
