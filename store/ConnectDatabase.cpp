#include "store/SharedConnection.h"
#include "store/Store.h"
#include "ui/win/Boxes.h"

namespace kestrelon::store {

std::wstring ConnectionStringOf(const std::wstring& path) {
  return L"Provider=Microsoft.Jet.OLEDB.4.0;Persist Security Info=False;Data Source=" + path;
}

std::wstring ShortConnectionStringOf(const std::wstring& path) {
  return L"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path;
}

bool ConnectDatabase(const Program& program, OutsideWorld& world) {
  return ConnectDatabase(world, [&] {
    jet::Connection connection;
    connection.SetConnectionString(ToEngine(ConnectionStringOf(program.dataFolder + L"Temp.dat")));
    connection.Open();
    connection.Close();
  });
}

bool ConnectDatabase(OutsideWorld& world, const std::function<void()>& connect) {
  return win::InRoutine(world, nullptr, L"Error:", false, [&] {
    try {
      connect();
      return true;
    } catch (const jet::Error& error) {
      // What a missing or unreadable file gives has its own box.
      if (error.Number() != jet::code::kGeneric) throw;
      win::Exclaim(world, nullptr, L"Connect Data Error, Program will be Exit ! ", L"ConnectDatabase Error");
      return false;
    }
  });
}

}  // namespace kestrelon::store
