extern "C" void writeRecord();

// Linked with a plugin, and may have its own services.
int main()
{
    writeRecord();
    return 0;
}
