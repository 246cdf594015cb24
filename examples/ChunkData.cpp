// Turns on chunk mode and reads each frame's chunks (frame ID, timestamp, geometry) from the
// buffer's chunk node map.

#include <cstdio>

#include <QvApi_TL.h>

int main()
{
    try
    {
        QvApi::CQvApiInitializer library;
        QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem());
        QvApi::CIQvDevicePtr device(system->CreateFirstIQvDevice());
        QvApi::CIQvDataStreamPtr stream(device->CreateIQvDataStream(0));

        // Enable every chunk the camera offers, then chunk mode itself (before acquisition).
        GenApi::INodeMap* pFeatures = device->GetRemoteIQvPort()->GetINodeMap();
        GenApi::CEnumerationPtr chunkSelector = pFeatures->GetNode("ChunkSelector");
        GenApi::CBooleanPtr chunkEnable = pFeatures->GetNode("ChunkEnable");
        GenApi::StringList_t chunks;
        chunkSelector->GetSymbolics(chunks);
        for (const GenICam::gcstring& chunk : chunks)
        {
            chunkSelector->FromString(chunk);
            chunkEnable->SetValue(true);
        }
        GenApi::CBooleanPtr(pFeatures->GetNode("ChunkModeActive"))->SetValue(true);

        stream->StartAcquisition();
        device->AcquisitionStart();
        for (int i = 0; i < 5; ++i)
        {
            QvApi::CIQvStreamBufferPtr buffer(stream->RetrieveBuffer(1000, QvApi::QvTimeoutHandling_Throw));
            // The chunk node map holds the values of this buffer's last fill.
            GenApi::INodeMap* pChunks = buffer->GetChunkINodeMap();
            if (pChunks == nullptr)
            {
                std::fprintf(stderr, "ChunkData: the buffer carries no chunks\n");
                return 1;
            }
            GenApi::CIntegerPtr frameId = pChunks->GetNode("ChunkFrameID");
            GenApi::CIntegerPtr timestamp = pChunks->GetNode("ChunkTimestamp");
            GenApi::CIntegerPtr width = pChunks->GetNode("ChunkWidth");
            GenApi::CIntegerPtr height = pChunks->GetNode("ChunkHeight");
            GenApi::CEnumerationPtr format = pChunks->GetNode("ChunkPixelFormat");
            std::printf("frame %lld at %lld ns: %lldx%lld %s\n", static_cast<long long>(frameId->GetValue()),
                        static_cast<long long>(timestamp->GetValue()), static_cast<long long>(width->GetValue()),
                        static_cast<long long>(height->GetValue()), format->ToString().c_str());
        }
        device->AcquisitionStop();
        stream->StopAcquisition();
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "ChunkData: %s\n", error.GetDescription());
        return 1;
    }
    return 0;
}
