<?xml version="1.0" encoding="UTF-8"?>
<Services xmlns="urn:morvane:servicerecord"
          xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
          xsi:schemaLocation="urn:morvane:servicerecord serviceRecord.xsd">
  <Service type="store">
    <SRID>branch-office</SRID>
    <Name>Branch Office</Name>
    <Address>https://localhost:9/Example/Branch</Address>
    <Gateways>
      <Gateway Name="Branch Gateway" Edition="Standard" Auth="Domain" RewriteMode="NONE" Default="true">
        <Location>https://localhost:@GATEWAY_PORT@</Location>
      </Gateway>
    </Gateways>
    <Internal>
      <Beacon>https://localhost:9</Beacon>
    </Internal>
    <External>
      <Beacon>https://localhost:@GATEWAY_PORT@/external</Beacon>
    </External>
  </Service>
</Services>
