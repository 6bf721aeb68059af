extern "C" const char* SherpaOnnxGetVersionStr() { return "1.13.9"; }
