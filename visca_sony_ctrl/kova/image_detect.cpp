// The Kova module's image detection: settings that the host asks for meanwhile are held back here.
#include "viscacam.h"

ImgDetectParam gstImgDetectParam = {};
