#include "QVRJSONBanners.h"

QVRJSONBanners::QVRJSONBanners(QVR_E_MARGINS margin, QVRJSONOutputStream* stream, QVRDataModel* dataModel)
    : IQVRBanners(margin, dataModel), m_pOutputStream(stream) {}
