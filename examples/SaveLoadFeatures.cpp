// Saves a camera's settings to a GenApi persistence file and loads them back after a change.
//
//   ./SaveLoadFeatures [FILE]      (default: camera-settings.txt in the current folder)

#include <cstdio>

#include <QvApi_TL.h>

int main(int argc, char** argv)
{
    const char* fileName = argc > 1 ? argv[1] : "camera-settings.txt";
    try
    {
        QvApi::CQvApiInitializer library;
        QvApi::CIQvSystemPtr system(QvApi::CreateIQvSystem());
        QvApi::CIQvDevicePtr device(system->CreateFirstIQvDevice());
        GenApi::INodeMap* pFeatures = device->GetRemoteIQvPort()->GetINodeMap();
        GenApi::CFloatPtr exposure = pFeatures->GetNode("ExposureTime");

        exposure->SetValue(2500.0);
        QvApi::CIQvFeatureBagPtr bag(QvApi::CreateIQvFeatureBag());
        // Stores every streamable feature; selected features once per selector value.
        const int64_t stored = bag->StoreNodeMapToBag(pFeatures);
        bag->SaveToFile(fileName);
        std::printf("saved %lld values to %s (ExposureTime %.1f us)\n", static_cast<long long>(stored), fileName,
                    exposure->GetValue());

        exposure->SetValue(40000.0);
        std::printf("changed ExposureTime to %.1f us\n", exposure->GetValue());

        // Load: read the file into a bag, apply it, verify each value, collect what failed.
        QvApi::CIQvFeatureBagPtr loaded(QvApi::CreateIQvFeatureBag());
        loaded->StoreFileToBag(fileName);
        GenICam::gcstring_vector errors;
        if (!loaded->Load(pFeatures, true, &errors))
        {
            for (const GenICam::gcstring& error : errors)
                std::fprintf(stderr, "SaveLoadFeatures: %s\n", error.c_str());
            return 1;
        }
        std::printf("loaded %s: ExposureTime %.1f us\n", fileName, exposure->GetValue());
        return exposure->GetValue() == 2500.0 ? 0 : 1;
    }
    catch (const GenICam::GenericException& error)
    {
        std::fprintf(stderr, "SaveLoadFeatures: %s\n", error.GetDescription());
        return 1;
    }
}
