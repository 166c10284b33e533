// Writes the description of the LV2 bundle, presets included, into the working folder.

extern "C" void lv2_generate_ttl(const char* basename);

int main() { lv2_generate_ttl("Tesserae"); }
