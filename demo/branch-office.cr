<?xml version="1.0" encoding="UTF-8"?>
<Services xmlns="urn:morvane:servicerecord"
          xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
          xsi:schemaLocation="urn:morvane:servicerecord serviceRecord.xsd">
  <Service type="store">
    <SRID>branch-office</SRID>
    <Name>Zweigstelle Köln</Name>
    <Address>https://127.0.0.1:@PORT@/Example/Branch</Address>
  </Service>
</Services>
