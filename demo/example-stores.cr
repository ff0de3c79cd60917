<?xml version="1.0" encoding="UTF-8"?>
<Services xmlns="urn:morvane:servicerecord"
          xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
          xsi:schemaLocation="urn:morvane:servicerecord serviceRecord.xsd">
  <Service type="store">
    <SRID>example-stores</SRID>
    <Name>Example Stores</Name>
    <Address>https://localhost:@PORT@/Example/Main</Address>
    <Gateways>
      <Gateway Name="Example Gateway" Edition="Enterprise" Auth="Domain" RewriteMode="SG_RW" Default="true">
        <Location>https://localhost:@GATEWAY_PORT@</Location>
      </Gateway>
      <Gateway Name="Spare Gateway" Edition="Standard" Auth="DomainAndRSA" RewriteMode="NONE" Default="false">
        <Location>https://127.0.0.1:@GATEWAY_PORT@</Location>
      </Gateway>
    </Gateways>
    <Internal>
      <Beacon>https://localhost:@PORT@/internal</Beacon>
    </Internal>
    <External>
      <Beacon>https://localhost:@GATEWAY_PORT@/external</Beacon>
    </External>
  </Service>
</Services>
