#pragma once

#include <QvApi/QvCallback.h>

#include "QvSDKCommon/QvCallbackParamBase.h"

namespace QvApi
{
/**
 * \brief The parameter of a new-buffer callback (type 5): the stream that received a buffer.
 *        Built on the new-buffer listener's stack for one dispatch.
 */
class CQvCallbackParamNewBuffer final : public CQvCallbackParamBase<IQvCallbackParamGenTLEventNewBuffer>
{
public:
    /// \param[in] pIQvDataStream The receiving stream; borrowed for the dispatch.
    explicit CQvCallbackParamNewBuffer(IQvDataStream* pIQvDataStream)
        : CQvCallbackParamBase<IQvCallbackParamGenTLEventNewBuffer>(QvCallbackTypeGenTLEventNewBuffer),
          m_pIQvDataStream(pIQvDataStream)
    {
    }
    ~CQvCallbackParamNewBuffer() override = default;

    IQvDataStream* GetIQvDataStream() const override { return m_pIQvDataStream; }

private:
    IQvDataStream* const m_pIQvDataStream;
};
} // namespace QvApi
