#include "host/chain/chain.h"

namespace icehost {
namespace {

// Manufacturers of chips with a TAP, by their bank and code in JEP106.
constexpr struct {
  unsigned bank;
  unsigned code;
  const char* name;
} kManufacturers[] = {
    {1, 0x01, "AMD"},           {1, 0x04, "Fujitsu"},
    {1, 0x07, "Hitachi"},       {1, 0x09, "Intel"},
    {1, 0x0e, "Freescale"},     {1, 0x10, "NEC"},
    {1, 0x15, "NXP"},           {1, 0x17, "Texas Instruments"},
    {1, 0x1f, "Atmel"},         {1, 0x20, "STMicroelectronics"},
    {1, 0x21, "Lattice"},       {1, 0x24, "IBM"},
    {1, 0x29, "Microchip"},     {1, 0x33, "IDT"},
    {1, 0x34, "Cypress"},       {1, 0x36, "LSI Logic"},
    {1, 0x41, "Infineon"},      {1, 0x49, "Xilinx"},
    {1, 0x4e, "Samsung"},       {1, 0x65, "Analog Devices"},
    {1, 0x6e, "Altera"},        {2, 0x01, "Cirrus Logic"},
    {2, 0x3f, "Broadcom"},      {3, 0x21, "Silicon Laboratories"},
    {3, 0x27, "MIPS"},          {3, 0x44, "Nordic"},
    {4, 0x4c, "Cavium"},        {4, 0x69, "Marvell"},
    {4, 0x6b, "NVIDIA"},        {5, 0x23, "Renesas"},
    {5, 0x26, "MediaTek"},      {5, 0x3b, "ARM"},
    {5, 0x66, "Synopsys"},      {5, 0x71, "Toshiba"},
    {5, 0x72, "Tensilica"},     {7, 0x19, "XMOS"},
    {7, 0x1e, "Andes"},         {7, 0x20, "Achronix"},
    {7, 0x48, "GigaDevice"},    {9, 0x0d, "Gowin"},
    {9, 0x2d, "Nuvoton"},       {10, 0x09, "SiFive"},
    {10, 0x13, "Raspberry Pi"}, {11, 0x3c, "Efinix"},
};

}  // namespace

std::string ManufacturerName(Manufacturer manufacturer) {
  for (const auto& known : kManufacturers) {
    if (known.bank == manufacturer.bank && known.code == manufacturer.code) return known.name;
  }
  return "";
}

}  // namespace icehost
