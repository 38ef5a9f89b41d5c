<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: a sales receipt as mailed to the customer.

  Receives one SalesReceiptRet of a sales receipt query response and writes an HTML
  fragment (the company header is put above it by the program). The sale is paid, so the
  receipt shows how (check number, payment method) and its TotalAmount.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="document-parts.xslt"/>

  <!-- Mail labels the HTML as plain text/html, which is US-ASCII: every other character
       goes out as a character reference. -->
  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:template match="/">
    <xsl:apply-templates select="(//SalesReceiptRet)[1]"/>
  </xsl:template>

  <xsl:template match="SalesReceiptRet">
    <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}">
      <xsl:call-template name="title-block">
        <xsl:with-param name="title">SALES RECEIPT</xsl:with-param>
        <xsl:with-param name="fields">
          <field label="Sale No." value="{RefNumber}"/>
          <field label="Date" value="{TxnDate}" kind="date"/>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:call-template name="parties-block">
        <xsl:with-param name="first-label">Sold To</xsl:with-param>
        <xsl:with-param name="first" select="BillAddress"/>
        <xsl:with-param name="first-name" select="CustomerRef/FullName"/>
        <xsl:with-param name="second-label">Ship To</xsl:with-param>
        <xsl:with-param name="second" select="ShipAddress"/>
      </xsl:call-template>
      <xsl:call-template name="info-strip">
        <xsl:with-param name="fields">
          <field label="Payment Method" value="{PaymentMethodRef/FullName}"/>
          <field label="Check No." value="{CheckNumber}"/>
          <field label="Rep" value="{SalesRepRef/FullName}"/>
          <field label="Ship Date" value="{ShipDate}" kind="date"/>
          <field label="Ship Via" value="{ShipMethodRef/FullName}"/>
          <field label="F.O.B." value="{FOB}"/>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:call-template name="line-table"/>
      <xsl:call-template name="totals-block">
        <xsl:with-param name="rows">
          <row label="Subtotal" value="{Subtotal}"/>
          <xsl:if test="SalesTaxTotal">
            <row value="{SalesTaxTotal}">
              <xsl:attribute name="label"><xsl:call-template name="tax-label"/></xsl:attribute>
            </row>
          </xsl:if>
          <row label="Total" strong="yes">
            <xsl:attribute name="value"><xsl:call-template name="total"/></xsl:attribute>
          </row>
        </xsl:with-param>
        <xsl:with-param name="message" select="CustomerMsgRef/FullName"/>
      </xsl:call-template>
    </table>
  </xsl:template>

</xsl:stylesheet>
