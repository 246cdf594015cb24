#pragma once

#include <stdint.h>

#include <QvApi/QvImage.h>
#include <QvApi/QvPixelFormat.h>

namespace QvApi
{
/**
 * \brief Draws a test chart into an image; returns false without drawing unless
 *        \a memoryInitialization is 3 (the chart request of _EQvMemoryInitialization_t).
 *
 * Writers read the geometry from the image and write only inside its height x line pitch
 * bytes. \throws BadAllocException when a working row cannot be allocated.
 */
using ChartWriter_t = bool (*)(IQvImage* pIQvImage, uint32_t memoryInitialization);

/// Grey-scale chart (steps and ramps) with 8-bit samples.
bool MakeChartMono8(IQvImage* pIQvImage, uint32_t memoryInitialization);
/// Grey-scale chart with 16-bit samples scaled to the format's valid bits.
bool MakeChartMono16(IQvImage* pIQvImage, uint32_t memoryInitialization);
/// Colour chart (6 x 4 patches) with 8-bit samples.
bool MakeChartBGR8(IQvImage* pIQvImage, uint32_t memoryInitialization);
/// Colour chart with 16-bit samples in B, G, R order.
bool MakeChartBGR16(IQvImage* pIQvImage, uint32_t memoryInitialization);

/// \return The chart writer of \a pixelFormat, or null for formats without a chart.
ChartWriter_t GetChartWriter(EQvPixelFormatNamingConvention_t pixelFormat);
} // namespace QvApi
