#!/usr/bin/env python3
"""Stands in for UDisks2 on a bus: udisks.py NODE POINT LOG

Knows one volume of one drive. Unmounting really unmounts, and what was called goes to the log.
"""
import os
import subprocess
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

UDISKS = "org.freedesktop.UDisks2"
BLOCK = "/org/freedesktop/UDisks2/block_devices/stick"
DRIVE = "/org/freedesktop/UDisks2/drives/stick"
node, point, log = sys.argv[1:]


def note(text):
    with open(log, "a", encoding="utf-8") as file:
        file.write(text + "\n")


class Object(dbus.service.Object):
    @dbus.service.method(UDISKS + ".Manager", in_signature="a{sv}a{sv}", out_signature="ao")
    def ResolveDevice(self, spec, options):
        return dbus.Array([BLOCK] if os.path.realpath(spec["path"]) == os.path.realpath(node) else [], signature="o")

    @dbus.service.method(UDISKS + ".Filesystem", in_signature="a{sv}")
    def Unmount(self, options):
        if subprocess.call(["umount", point], stderr=subprocess.DEVNULL):
            raise dbus.DBusException("target is busy", name=UDISKS + ".Error.DeviceBusy")
        note("unmounted")

    @dbus.service.method(UDISKS + ".Drive", in_signature="a{sv}")
    def PowerOff(self, options):
        note("off")

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return {"CryptoBackingDevice": dbus.ObjectPath("/"), "Drive": dbus.ObjectPath(DRIVE), "CanPowerOff": True}[name]


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SystemBus()
name = dbus.service.BusName(UDISKS, bus)
objects = [Object(bus, path) for path in ("/org/freedesktop/UDisks2/Manager", BLOCK, DRIVE)]
note("ready")
GLib.MainLoop().run()
